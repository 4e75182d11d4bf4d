/* own example */

(* keep =  1  *)
(* src = "top.v:1.1-12.10" *)
module top(clk, din, dout);
  (* src = "top.v:2.9-2.12" *)
  input clk;
  wire clk;
  (* src = "top.v:3.9-3.12" *)
  input din;
  wire din;
  (* src = "top.v:4.10-4.14" *)
  output dout;
  wire dout;
  wire _00_;
  (* unused_bits = "0" *)
  wire [7:0] _01_;
  wire _02_;
  (* module_not_derived = 32'd1 *)
  (* src = "top.v:6.3-6.9|cells.v:3.1" *)
  lib_dfxtp_1 _10_ (
    .CLK(clk),
    .D(din),
    .Q(_00_)
  );
  lib_inv_1 _11_ (
    .A(_00_),
    .Y(_02_)
  );
  lib_dfxtp_1 _12_ (
    .CLK(clk),
    .D(_02_),
    .Q(dout)
  );
  assign _01_[7:1] = { 6'h00, _00_ };
  assign _01_[0] = 1'hx;
endmodule
