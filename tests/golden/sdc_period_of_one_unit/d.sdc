create_clock -name clk -period 0.001 [get_ports clk]
