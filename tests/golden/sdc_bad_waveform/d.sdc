create_clock -period 10 -waveform {5 2} [get_ports clk]
