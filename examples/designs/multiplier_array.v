// A systolic array of 6 x 6 multiply-accumulate cells: the product of two 6 x 6 matrices of bytes.
//
// Row i takes the matrix A from the left, column j the matrix B from above, both skewed by one
// clock for each row or column. Operands walk on by one cell a clock. With `drain` high the
// sums walk down the columns instead, a row each clock, and leave at the bottom.

module mac_cell (
    input             clk,
    input             clear,
    input             drain,
    input      [7:0]  a_in,
    input      [7:0]  b_in,
    input      [19:0] sum_in,
    output reg [7:0]  a_out,
    output reg [7:0]  b_out,
    output reg [19:0] sum
);
    wire [15:0] product = a_in * b_in;

    always @(posedge clk) begin
        a_out <= a_in;
        b_out <= b_in;
        if (clear)
            sum <= 20'd0;
        else if (drain)
            sum <= sum_in;
        else
            sum <= sum + {4'd0, product};
    end
endmodule

module multiplier_array (
    input          clk,
    input          clear,
    input          drain,
    input  [47:0]  a,
    input  [47:0]  b,
    output [119:0] sums
);
    wire [7:0]  a_wire [0:41];   // row * 7 + column
    wire [7:0]  b_wire [0:41];   // column * 7 + row
    wire [19:0] s_wire [0:41];   // column * 7 + row

    genvar i, j;
    generate
        for (i = 0; i < 6; i = i + 1) begin : edges
            assign a_wire[i * 7]       = a[i * 8 +: 8];
            assign b_wire[i * 7]       = b[i * 8 +: 8];
            assign s_wire[i * 7]       = 20'd0;
            assign sums[i * 20 +: 20]  = s_wire[i * 7 + 6];
        end
        for (i = 0; i < 6; i = i + 1) begin : rows
            for (j = 0; j < 6; j = j + 1) begin : columns
                mac_cell mac (
                    .clk(clk), .clear(clear), .drain(drain),
                    .a_in(a_wire[i * 7 + j]), .a_out(a_wire[i * 7 + j + 1]),
                    .b_in(b_wire[j * 7 + i]), .b_out(b_wire[j * 7 + i + 1]),
                    .sum_in(s_wire[j * 7 + i]), .sum(s_wire[j * 7 + i + 1]));
            end
        end
    endgenerate
endmodule
