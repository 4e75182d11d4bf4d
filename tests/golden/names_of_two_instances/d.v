module sub(input clk, input d, output q);
  DFF \a.b (.C(clk), .D(d), .Q(q));
endmodule
module low(input clk, input d, output q);
  DFF b (.C(clk), .D(d), .Q(q));
endmodule
module top(input clk, input d, output q);
  wire x;
  sub u (.clk(clk), .d(d), .q(x));
  low \u.a (.clk(clk), .d(x), .q(q));
endmodule
