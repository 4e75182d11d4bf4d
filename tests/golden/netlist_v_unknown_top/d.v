module top (clk, din, dout);
  input clk, din;
  output dout;
  wire q;
  DFF r0 (.C(clk), .D(din), .Q(q));
  DFF r1 (.C(clk), .D(q), .Q(dout));
endmodule
