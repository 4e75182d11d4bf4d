create_clock -name clk -period ten [get_ports clk]
set_input_delay -clock clk 1 [get_ports din]
set delay [lindx {1 2} 0]
set_output_delay $delay [get_ports dout]
foreach port {din dout} {
    set_input_delay
}
set_false_path -form r0
