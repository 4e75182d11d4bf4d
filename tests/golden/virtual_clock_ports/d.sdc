create_clock -name clk -period 10 [get_ports clk]
create_clock -name ext -period 10 -waveform {2 7}
set_input_delay 1 -clock ext [get_ports din]
set_output_delay 1 -clock ext [get_ports dout]
