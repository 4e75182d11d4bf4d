create_clock -name clk -period 10 [get_ports clk]
proc f {} {
    set_input_delay 1
}
f
