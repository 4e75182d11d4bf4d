// own example
module top(clk, din, dout);
input clk, din; output dout;
wire q, n, w;
wire tied = 1'b1;
dff r0(clk, din, q);
not g1(n, q);
assign w = n ^ (tied & 1'b0);
dff r1(clk, w, dout);
endmodule

module dff(CK, D, Q); // a model, not to be flattened
input CK, D; output Q;
reg Q;
always @(posedge CK)
  begin
    Q <= #1 D;
  end
endmodule
