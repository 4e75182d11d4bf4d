create_clock -name clk -period 10 [get_ports clk]
set f [open d.sdf r]
