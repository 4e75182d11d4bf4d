create_clock -name clk -period 1000 [get_ports clk]
