create_clock -name clk -period 10 [get_ports clk]
create_generated_clock -name a -source [get_pins r0/Q] -master_clock b [get_pins r1/Q]
