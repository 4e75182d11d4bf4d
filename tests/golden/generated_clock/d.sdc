create_clock -name clk -period 10 [get_ports clk]
set_input_delay 1 -clock clk [get_ports din]
create_generated_clock -name half -source [get_pins r0/C] -divide_by 2 [get_pins r0/Q]
