create_clock -name clk -period 2.1 [get_ports clk]
