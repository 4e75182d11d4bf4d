create_clock [get_ports clk]
