module top(input clk, input d, output q);
  wire n, c;
  CLKCTRL ctl (.inclk(clk), .outclk(c));
  DFF r0 (.C(c), .D(d), .Q(n));
  DFF r1 (.C(c), .D(n), .Q(q));
endmodule
