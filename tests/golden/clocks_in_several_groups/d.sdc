create_clock -name a -period 10 [get_ports clk]
create_clock -add -name b -period 10 -waveform {3 8} [get_ports clk]
create_clock -add -name c -period 10 -waveform {1 6} [get_ports clk]
set_clock_groups -asynchronous -group {a b} -group {b c}
