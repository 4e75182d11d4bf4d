# in seconds
create_clock -name clk -period 5e-9 [get_ports clk]
