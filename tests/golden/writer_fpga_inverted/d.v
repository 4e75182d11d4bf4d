// Own example of a netlist for gate level simulation
`timescale 1 ps/ 1 ps

module top (
	clk,
	din,
	dout);
input 	clk;
input 	din;
output 	dout;

// Design Ports Information
// dout => Location: PIN_A1, I/O Standard: 2.5 V

wire gnd;
wire vcc;
wire unknown;

assign gnd = 1'b0;
assign vcc = 1'b1;
assign unknown = 1'bx;

tri1 allclrn;
tri1 allpor;
tri1 alloe;
// translate_off
initial $sdf_annotate("d.sdf");
// translate_on

wire \q0~reg0_q ;
wire \g~0_combout ;
wire \q1~reg0_q ;

regcell \q0~reg0 (
	.clk(clk),
	.d(din),
	.asdata(vcc),
	.clrn(vcc),
	.allclrn(allclrn),
	.allpor(allpor),
	.q(\q0~reg0_q ),
	.prn(vcc));
// translate_off
defparam \q0~reg0 .placed = "true";
defparam \q0~reg0 .power_up = "low";
// translate_on

logic_comb \g~0 (
	.dataa(!\q0~reg0_q ),
	.datab(gnd),
	.cin(gnd),
	.combout(\g~0_combout ),
	.cout());
// translate_off
defparam \g~0 .lut_mask = 16'h5555;
// translate_on

regcell \q1~reg0 (
	.clk(!clk),
	.d(\g~0_combout ),
	.allclrn(allclrn),
	.allpor(allpor),
	.q(\q1~reg0_q ));

io_obuf \dout~output (
	.i(\q1~reg0_q ),
	.oe(vcc),
	.alloe(alloe),
	.o(dout),
	.obar());
endmodule
