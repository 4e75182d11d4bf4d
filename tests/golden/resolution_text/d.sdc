create_clock -name clk -period 0.850457 [get_ports clk]
