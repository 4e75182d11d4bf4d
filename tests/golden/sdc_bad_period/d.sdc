create_clock -period ten [get_ports clk]
