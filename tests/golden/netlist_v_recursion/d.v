module top(input a);
  top u(.a(a));
endmodule
