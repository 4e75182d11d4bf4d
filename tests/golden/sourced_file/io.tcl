set_input_delay 1 -clock clk [get_ports din]
set_output_delay 1 -clock clk [get_ports dout]
