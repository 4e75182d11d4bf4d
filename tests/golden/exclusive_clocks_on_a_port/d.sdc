create_clock -name clk -period 10 [get_ports clk]
create_clock -add -name other -period 8 [get_ports clk]
set_clock_groups -physically_exclusive -group clk -group other
