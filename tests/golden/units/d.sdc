set_units -time ps
create_clock -name clk -period 10000 [get_ports clk]
