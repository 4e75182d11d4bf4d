module top(input clk, input d, output q);
  wire n, c2;
  DIV u1 (.CLKIN(clk), .CLKOUT0(c2));
  DFF r0 (.C(clk), .D(d), .Q(n), .QN());
  DFF r1 (.C(c2), .D(n), .Q(q));
endmodule
