// Written after route, for timing simulation.
`timescale 1 ps / 1 ps
`define ROUTED_TIMING

(* CHECKSUM = "5f2c" *) (* STRUCTURAL_NETLIST = "yes" *)
(* SIMULATION_ONLY *)
module top
   (clk,
    din,
    dout);
  input clk;
  input din;
  output dout;

  wire \<const0> ;
  wire clk;
  wire din;
  wire dout;
  wire [1:0]\q_reg[1] ;

initial begin
 $sdf_annotate("d.sdf",,,,"tool_control");
end
  GND GND
       (.G(\<const0> ));
  (* INIT = "1'b0" *) (* PAIR = "pair0" *)
  DFFRE #(
    .INIT(1'b0))
    \q_reg[0]
       (.C(clk),
        .CE(1'b1),
        .D(din),
        .Q(\q_reg[1] [0]),
        .R(\<const0> ));
  LUT1 #(
    .INIT(2'h1))
    \q[1]_i_1
       (.I0(\q_reg[1] [0]),
        .O(\q_reg[1] [1]));
  DFFRE #(
    .INIT(1'b0))
    \q_reg[1]_inst
       (.C(clk),
        .CE(1'b1),
        .D(\q_reg[1] [1]),
        .Q(dout),
        .R(\<const0> ));
endmodule
`ifndef GLBL
`define GLBL
`timescale  1 ps / 1 ps

module glbl ();

    parameter ROC_WIDTH = 100000;
    parameter TOC_WIDTH = 0;

//--------   STARTUP Globals --------------
    wire GSR;
    wire GTS;
    tri1 p_up_tmp;
    tri (weak1, strong0) PLL_LOCKG = p_up_tmp;

    reg GSR_int;
    reg GTS_int;

    assign (strong1, weak0) GSR = GSR_int;
    assign (weak1, weak0) GTS = GTS_int;

    initial begin
	GSR_int = 1'b1;
	#(ROC_WIDTH)
	GSR_int = 1'b0;
    end
    initial begin
	GTS_int = 1'b1;
	#(TOC_WIDTH) GTS_int = 1'b0;
    end
endmodule
`endif
