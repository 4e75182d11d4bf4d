module sub(input clk, input d, output q);
  wire n;
  DFF \a.b (.C(clk), .D(d), .Q(n));
  DFF c (.C(clk), .D(n), .Q(q));
endmodule
module top(input clk, input d, output q);
  wire x;
  sub u (.clk(clk), .d(d), .q(x));
  DFF r (.C(clk), .D(x), .Q(q));
endmodule
