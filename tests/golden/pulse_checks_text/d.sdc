create_clock -name clk -period 10 -waveform {2 6} [get_ports clk]
