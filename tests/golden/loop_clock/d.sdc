create_clock -name clk -period 3 [get_ports clk]
create_clock -name en -period 3 [get_ports en]
