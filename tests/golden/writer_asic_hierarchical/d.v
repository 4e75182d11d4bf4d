module stage_1 (d, ck, q, unused);
  input  d, ck;
  output [1:0] q;
  output unused;
  SDFFX1 \q_reg[0]  ( .D(d), .SI(1'b0), .SE(1'b0), .CK(ck), .Q(q[0]), .QN() );
  INVX1 U1 ( .A(q[0]), .Y(q[1]) );
endmodule


module top ( clk, din, dout );
  input clk, din;
  output dout;
  wire   [1:0] \first/q ;
  wire n1, UNCONNECTED__0, UNCONNECTED__1;

  stage_1 first ( .d(din), .ck(clk), .q({\first/q [1], n1}), .unused() );
  SDFFX1 r1 ( .D(\first/q [1]), .SI(n1), .SE(1'b0), .CK(clk), .Q(dout), .QN(
        UNCONNECTED__1) );
endmodule
