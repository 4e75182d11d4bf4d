create_clock -period 10 a
set_multicycle_path 2 -from g/Z
set_max_delay 3 -from g/Z
