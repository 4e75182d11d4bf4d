module bench; wire c, d, q; initial #10 $finish; always #5 ; other u (.d(d), .q(q)); endmodule
module other (input d, output q); BUF b (.A(d), .Y(q)); endmodule
module top (input clk, din, output dout);
  wire q, n;
  DFF r0 (.C(clk), .D(din), .Q(q)), r1 (.C(clk), .D(n), .Q(dout));
  BUF g (.A(q), .Y(n));
endmodule
