create_clock -name clk -period 10.0005 [get_ports clk]
set_clock_uncertainty 0.1000 [get_clocks clk]
