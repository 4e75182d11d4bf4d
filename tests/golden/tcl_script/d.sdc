set period 10
proc delay {ports value} {
    foreach_in_collection port $ports {
        if {[get_attribute $port direction] eq "input"} {
            set_input_delay $value -clock clk $port
        } else {
            set_output_delay $value -clock clk $port
        }
    }
}
create_clock -name clk -period $period [get_ports clk]
delay [get_ports {din dout}] [expr {0.5 * 2}]
puts "period $period"
