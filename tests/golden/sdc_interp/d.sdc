create_clock -name clk -period 10 [get_ports clk]
interp eval {} {exec touch here}
