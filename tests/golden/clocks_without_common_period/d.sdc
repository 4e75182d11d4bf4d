create_clock -name clk -period 10 [get_ports clk]
create_clock -add -name other -period 9.999 [get_ports clk]
