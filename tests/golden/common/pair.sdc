create_clock -name clk -period 2.5 [get_ports clk]
set_input_delay 0.5 -clock clk [get_ports din]
set_output_delay 0.4 -clock clk [get_ports dout]
