create_clock -name clk -period 10 [get_ports clk]
set_max_delay 1 -to [get_pins x/A]
