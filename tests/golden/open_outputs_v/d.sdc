create_clock -name clk -period 10 [get_ports clk]
create_generated_clock -name half -source [get_pins u1/CLKIN] -divide_by 2 [get_pins u1/CLKOUT1]
create_generated_clock -name same -source [get_pins u1/CLKIN] -divide_by 1 [get_pins u1/CLKOUT0]
