create_clock -name clk -period 2000 [get_ports clk]
