create_clock -period 10 a
create_clock -period 10 b
set_input_delay 0 -clock a din
set_output_delay 0 -clock a dout
set_clock_groups -asynchronous -group a -group b
set_max_delay 5 -from s -to t
set_multicycle_path 2 -setup -to r1
set_multicycle_path 1 -hold -to r1
set_multicycle_path 3 -setup -from [get_clocks a] -to r1
set_multicycle_path 4 -setup -through g/Z
set_false_path -hold -to dout
set_false_path -from r1 -to r0
set_false_path -through g/Z -through g/A
set_false_path -from [get_cells nothing]
set_max_delay 3 -from din
group_path -name io -weight 2 -to dout
