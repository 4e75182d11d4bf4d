create_clock -name clk -period 10 [get_ports clk]
return -code error "no such board"
set_false_path -to r1
