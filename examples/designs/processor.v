// A 16-bit processor of one instruction per clock, with its memories outside.
//
// Eight registers of 16 bits; r0 reads as 0. An instruction has the operation in its top four
// bits, then three register fields of three bits; the three lowest bits are left over. The
// immediate of six bits takes the place of the third register and the rest, sign-extended.
//
//     0 add   1 sub   2 and   3 or   4 xor   5 shift left   6 shift right   7 set if less (signed)
//     8 add immediate         9 load upper byte (rd = imm8 << 8)
//     a load  b store (address rs + imm6)     c branch if equal   d branch if not equal (rd, rs)
//     e jump and link (rd = pc + 1, pc = rs + imm6)               f multiply, low half

module processor (
    input         clk,
    input         reset,
    input  [15:0] instruction,
    input  [15:0] data_in,
    output [15:0] pc,
    output [15:0] address,
    output [15:0] data_out,
    output        store
);
    wire [3:0] op  = instruction[15:12];
    wire [2:0] rd  = instruction[11:9];
    wire [2:0] rs  = instruction[8:6];
    wire [2:0] rt  = instruction[5:3];
    wire [15:0] imm = {{10{instruction[5]}}, instruction[5:0]};

    reg [15:0] counter;
    reg [15:0] r1, r2, r3, r4, r5, r6, r7;

    function [15:0] read_port (input [2:0] index);
        case (index)
            3'd0: read_port = 16'd0;
            3'd1: read_port = r1;
            3'd2: read_port = r2;
            3'd3: read_port = r3;
            3'd4: read_port = r4;
            3'd5: read_port = r5;
            3'd6: read_port = r6;
            default: read_port = r7;
        endcase
    endfunction

    wire is_branch = op[3:1] == 3'b110;
    wire is_store  = op == 4'hb;

    wire [15:0] a = read_port(rs);
    wire [15:0] b = read_port(is_branch || is_store ? rd : rt);

    wire [16:0] difference = {1'b0, a} - {1'b0, b};
    wire        less       = (a[15] ^ b[15]) ? a[15] : difference[16];
    wire [15:0] sum_imm    = a + imm;
    wire [15:0] next_pc    = counter + 16'd1;

    reg [15:0] result;
    always @* begin
        case (op)
            4'h0: result = a + b;
            4'h1: result = difference[15:0];
            4'h2: result = a & b;
            4'h3: result = a | b;
            4'h4: result = a ^ b;
            4'h5: result = a << b[3:0];
            4'h6: result = a >> b[3:0];
            4'h7: result = {15'd0, less};
            4'h8: result = sum_imm;
            4'h9: result = {instruction[7:0], 8'd0};
            4'ha: result = data_in;
            4'hf: result = a * b;
            default: result = next_pc;
        endcase
    end

    wire writes = !reset && !is_branch && !is_store;
    wire taken  = is_branch && ((a == b) ^ op[0]);

    always @(posedge clk) begin
        if (reset)
            counter <= 16'd0;
        else if (op == 4'he)
            counter <= sum_imm;
        else if (taken)
            counter <= counter + imm;
        else
            counter <= next_pc;
        if (writes)
            case (rd)
                3'd1: r1 <= result;
                3'd2: r2 <= result;
                3'd3: r3 <= result;
                3'd4: r4 <= result;
                3'd5: r5 <= result;
                3'd6: r6 <= result;
                3'd7: r7 <= result;
                default: ;
            endcase
    end

    assign pc       = counter;
    assign address  = sum_imm;
    assign data_out = b;
    assign store    = is_store && !reset;
endmodule
