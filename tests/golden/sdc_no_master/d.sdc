create_generated_clock -name g -source [get_pins r0/C] -divide_by 2 [get_pins r0/Q]
