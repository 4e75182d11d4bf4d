create_clock -name clk -period 10 [get_ports clk]
create_clock -name spare -period 7 [get_ports clk2]
create_clock -name virtual -period 3
