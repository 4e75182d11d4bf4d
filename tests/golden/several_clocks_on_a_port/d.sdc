create_clock -name clk -period 10 [get_ports clk]
create_clock -add -name other -period 8 [get_ports clk]
