create_clock -name clk -period 10 [get_ports clk]
puts "\x1b\[31mred\x07 \xe4\nnext"
get_ports "a\x1b(2J"
