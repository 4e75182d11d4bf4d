`define OUT dout
module top (clk, din, dout);
  input clk, din;
  output dout;
  wire q;
  DFF r0 (.C(clk) .D(din), .Q(q));
  wire [n:0] v;
  DFF r1 (.C(clk), .D(q), .Q(`OUT[3]));
  DFF r2 (.C(clk), .D(`Q), .Q(v[2]));
endmodule
