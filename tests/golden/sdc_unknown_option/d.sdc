create_clock -name clk -period 10 [get_ports clk]
set_false_path -form [get_ports din]
