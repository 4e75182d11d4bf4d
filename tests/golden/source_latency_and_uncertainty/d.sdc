create_clock -name clk -period 10 [get_ports clk]
set_clock_latency -source -late 0.3 clk
set_clock_latency -source -early 0.1 clk
set_clock_uncertainty -setup 0.25 clk
set_clock_uncertainty -hold 0.05 clk
