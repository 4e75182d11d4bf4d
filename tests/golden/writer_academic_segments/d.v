// own example, written after place and route
module top (
    input \clk ,
    input \din ,
    output \dout
);

    //Wires
    wire \clk_output_0_0 ;
    wire \din_output_0_0 ;
    wire \latch_q0_output_0_0 ;
    wire \lut_n5_output_0_0 ;
    wire \latch_q1_output_0_0 ;
    wire \latch_q0_clock_0_0 , \latch_q1_clock_0_0 , \latch_q0_input_0_0 , \latch_q1_input_0_0 ;
    wire \lut_n5_input_0_1 ;
    wire \dout_input_0_0 ;

    //IO assignments
    assign \dout  = \dout_input_0_0 ;
    assign \clk_output_0_0  = \clk ;
    assign \din_output_0_0  = \din ;

    //Interconnect
    fpga_interconnect \routing_segment_clk_output_0_0_to_latch_q0_clock_0_0  (
        .datain(\clk_output_0_0 ),
        .dataout(\latch_q0_clock_0_0 )
    );

    fpga_interconnect \routing_segment_clk_output_0_0_to_latch_q1_clock_0_0  (
        .datain(\clk_output_0_0 ),
        .dataout(\latch_q1_clock_0_0 )
    );

    fpga_interconnect \routing_segment_din_output_0_0_to_latch_q0_input_0_0  (
        .datain(\din_output_0_0 ),
        .dataout(\latch_q0_input_0_0 )
    );

    fpga_interconnect \routing_segment_latch_q0_output_0_0_to_lut_n5_input_0_1  (
        .datain(\latch_q0_output_0_0 ),
        .dataout(\lut_n5_input_0_1 )
    );

    fpga_interconnect \routing_segment_lut_n5_output_0_0_to_latch_q1_input_0_0  (
        .datain(\lut_n5_output_0_0 ),
        .dataout(\latch_q1_input_0_0 )
    );

    fpga_interconnect \routing_segment_latch_q1_output_0_0_to_dout_input_0_0  (
        .datain(\latch_q1_output_0_0 ),
        .dataout(\dout_input_0_0 )
    );

    //Cell instances
    LUT_K #(
        .K(4),
        .LUT_MASK(16'b0000000000001100)
    ) \lut_n5  (
        .in({
            1'b0,
            1'b0,
            \lut_n5_input_0_1 ,
            1'bX}),
        .out(\lut_n5_output_0_0 )
    );

    DFF #(
        .INITIAL_VALUE(1'b0)
    ) \latch_q0  (
        .D(\latch_q0_input_0_0 ),
        .Q(\latch_q0_output_0_0 ),
        .clock(\latch_q0_clock_0_0 )
    );

    DFF #(
        .INITIAL_VALUE(1'b0)
    ) \latch_q1  (
        .D(\latch_q1_input_0_0 ),
        .Q(\latch_q1_output_0_0 ),
        .clock(\latch_q1_clock_0_0 )
    );


endmodule
