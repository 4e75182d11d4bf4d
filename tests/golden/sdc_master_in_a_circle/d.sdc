create_clock -name clk -period 10 [get_ports clk]
create_generated_clock -name a -source [get_pins r1/Q] -divide_by 2 [get_pins r0/Q]
create_generated_clock -name b -source [get_pins r0/Q] -divide_by 2 [get_pins r1/Q]
