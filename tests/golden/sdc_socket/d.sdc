create_clock -name clk -period 10 [get_ports clk]
socket localhost 80
