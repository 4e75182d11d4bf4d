create_clock -name clk -period 10 [get_ports clk]
create_generated_clock -name fast -source [get_pins p/REF] -multiply_by 2 [get_pins p/OUT]
