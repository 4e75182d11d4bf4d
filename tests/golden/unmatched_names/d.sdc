create_clock -name clk -period 10 [get_ports clk]
set_false_path -to [get_cells nothing]
set_output_delay 1 -clock clk [get_ports {led[3]}]
