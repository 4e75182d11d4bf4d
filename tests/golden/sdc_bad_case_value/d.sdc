create_clock -name clk -period 10 [get_ports clk]
set_case_analysis 2 [get_ports din]
