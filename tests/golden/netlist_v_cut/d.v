module top (clk, din, dout);
  input clk, din;
  output dout;
  wire q;
  DFF