create_clock -name clk -period 10 [get_ports clk]
if {[llength [get_ports clk]] == 1} {
    return
}
set_false_path -to r1
