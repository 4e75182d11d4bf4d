/* own example: netlist and cell models in one file */
`ifdef SDF_FILE
 `define ANNOTATE initial $sdf_annotate(`SDF_FILE, top);
`else
 `define ANNOTATE
`endif
`define REG(n, d, q) REGS1 n (.D(d), .CK(clk), .Q(q))
`timescale 1 ns/1 ps
`celldefine
module REGS1 (input D, CK, output Q);
  reg Q_i, notify;
  always @(posedge CK) Q_i <= D;
  always @(notify) Q_i = 1'bx;
  buf (Q, Q_i);
  specify
    (posedge CK => (Q : D)) = (1, 1);
    $setuphold(posedge CK, D, 0, 0, notify);
  endspecify
endmodule
`endcelldefine
primitive u_lut (o, a); output o; input a;
  table
  // a : o
     0 : 1 ;
     1 : 0 ;
  endtable
endprimitive
module LUT1 #(parameter [1:0] INIT = 2'b01) (input A, output Z);
  u_lut #(0.1) (Z, A);
  specify (A => Z) = (0:0:0); endspecify
endmodule
module GSR (input GSR); endmodule
module top (input clk, din, output dout);
  `ANNOTATE
  wire q, z, n$;
  supply1 vcc;
  supply0 gnd;
  GSR GSR_INST (.GSR(vcc));
  `REG(r0, din, q);
  LUT1 #(.INIT(`ifdef X 2'b10 `else 2'b01 `endif)) lut (.A(q), .Z(z));
  `REG (r1, z, dout);
endmodule
