`default_nettype none
module top #(parameter int W = 1) (
  input  logic clk,
  input  wire logic din,
  output logic dout
);
  logic q, \Q ;
  logic [2:0] d = '0;
  generate
    ff r0 (.clk, .d(din), .q, .ce('1), .r('0));
    inv g (.a(q), .y(\Q ));
  endgenerate
  ff r1 (.clk, .d(Q), .q(dout), .ce(1'b1), .r(d[0]));
endmodule : top
`default_nettype wire
