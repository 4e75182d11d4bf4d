create_clock -name clk -period 10 [get_ports clk]
proc f {n} { eval [list f [incr n]] }
f 0
