// A serial link: bytes go into a queue of 16, are sent in frames with a scrambler and a checksum,
// and are received at the other end of the line, checked and put into a queue of 16 again.
//
// A frame on the line, lowest bit first, one bit every four clocks:
//
//     start bit 0 | length - 1 (4 bits) | scrambled bytes | checksum (16 bits) | stop bit 1
//
// The line rests at 1. A frame takes all bytes that wait when it begins. The checksum is the
// CRC x^16 + x^12 + x^5 + 1 over the length and the bytes as they are on the line.

module byte_queue (
    input        clk,
    input        reset,
    input        put,
    input  [7:0] in,
    input        take,
    output [7:0] out,
    output [4:0] count
);
    reg [7:0] bytes [0:15];
    reg [4:0] head, tail;

    assign count = tail - head;
    assign out   = bytes[head[3:0]];

    always @(posedge clk) begin
        if (put && count != 5'd16)
            bytes[tail[3:0]] <= in;
        if (reset) begin
            head <= 5'd0;
            tail <= 5'd0;
        end else begin
            if (put && count != 5'd16)
                tail <= tail + 5'd1;
            if (take && count != 5'd0)
                head <= head + 5'd1;
        end
    end
endmodule

// Checksum and scrambler of one direction; both take one bit when `step` is high. The scrambler
// x^7 + x^4 + 1 is set to all ones by `start`.
module line_code (
    input             clk,
    input             start,
    input             step,
    input             bit_in,
    output reg [15:0] crc,
    output            mask
);
    reg  [6:0] lfsr;
    wire       feedback = crc[15] ^ bit_in;

    assign mask = lfsr[6];

    always @(posedge clk) begin
        if (start) begin
            crc  <= 16'hffff;
            lfsr <= 7'h7f;
        end else if (step) begin
            crc  <= {crc[14:0], 1'b0} ^ (feedback ? 16'h1021 : 16'h0000);
            lfsr <= {lfsr[5:0], lfsr[6] ^ lfsr[3]};
        end
    end
endmodule

module transmitter (
    input            clk,
    input            reset,
    input      [7:0] in,
    input      [4:0] waiting,
    output           take,
    output reg       line
);
    localparam REST = 3'd0, LENGTH = 3'd1, BYTES = 3'd2, CHECK = 3'd3, STOP = 3'd4;

    reg [2:0] state;
    reg [1:0] phase;
    reg [3:0] left;      // bytes after this one
    reg [3:0] position;  // bit within the field
    wire      tick = phase == 2'd3;

    wire [15:0] crc;
    wire        mask;
    wire        payload = state == BYTES;
    wire        bit_out = state == LENGTH ? left[position[1:0]] : in[position[2:0]] ^ mask;

    line_code code (
        .clk(clk), .start(state == REST), .step(tick && (state == LENGTH || payload)),
        .bit_in(bit_out), .crc(crc), .mask(mask));

    assign take = tick && payload && position == 4'd7;

    always @(posedge clk) begin
        phase <= phase + 2'd1;
        if (reset) begin
            state    <= REST;
            phase    <= 2'd0;
            line     <= 1'b1;
            left     <= 4'd0;
            position <= 4'd0;
        end else if (tick) begin
            position <= position + 4'd1;
            case (state)
                REST: begin
                    line     <= waiting == 5'd0;
                    left     <= waiting[3:0] - 4'd1;
                    position <= 4'd0;
                    if (waiting != 5'd0)
                        state <= LENGTH;
                end
                LENGTH: begin
                    line <= bit_out;
                    if (position == 4'd3) begin
                        state    <= BYTES;
                        position <= 4'd0;
                    end
                end
                BYTES: begin
                    line <= bit_out;
                    if (position == 4'd7) begin
                        position <= 4'd0;
                        left     <= left - 4'd1;
                        if (left == 4'd0)
                            state <= CHECK;
                    end
                end
                CHECK: begin
                    line <= crc[4'd15 - position];
                    if (position == 4'd15)
                        state <= STOP;
                end
                default: begin
                    line  <= 1'b1;
                    state <= REST;
                end
            endcase
        end
    end
endmodule

module receiver (
    input            clk,
    input            reset,
    input            line,
    output reg       put,
    output reg [7:0] out,
    output reg       good,
    output reg       bad
);
    localparam REST = 3'd0, LENGTH = 3'd1, BYTES = 3'd2, CHECK = 3'd3, STOP = 3'd4;

    reg [2:0] state;
    reg [1:0] phase;
    reg [3:0] left;
    reg [3:0] position;
    reg [1:0] sampled;   // the line through two registers
    reg       matches;
    wire      bit_in = sampled[1];
    wire      tick   = phase == 2'd2;   // near the middle of a bit

    wire [15:0] crc;
    wire        mask;

    line_code code (
        .clk(clk), .start(state == REST), .step(tick && (state == LENGTH || state == BYTES)),
        .bit_in(bit_in), .crc(crc), .mask(mask));

    always @(posedge clk) begin
        sampled <= {sampled[0], line};
        phase   <= phase + 2'd1;
        put     <= 1'b0;
        good    <= 1'b0;
        bad     <= 1'b0;
        if (reset) begin
            state    <= REST;
            sampled  <= 2'b11;
            phase    <= 2'd0;
            left     <= 4'd0;
            position <= 4'd0;
            matches  <= 1'b1;
        end else if (state == REST) begin
            // The start bit is passed over: the first tick falls into the bit after it.
            position <= 4'd0;
            left     <= 4'd0;
            matches  <= 1'b1;
            phase    <= 2'd1;
            if (!bit_in) begin
                phase <= 2'd0;
                state <= 3'd5;
            end
        end else if (state == 3'd5) begin
            if (tick)
                state <= LENGTH;
        end else if (tick) begin
            position <= position + 4'd1;
            case (state)
                LENGTH: begin
                    left <= {bit_in, left[3:1]};
                    if (position == 4'd3) begin
                        state    <= BYTES;
                        position <= 4'd0;
                    end
                end
                BYTES: begin
                    out <= {bit_in ^ mask, out[7:1]};
                    if (position == 4'd7) begin
                        put      <= 1'b1;
                        position <= 4'd0;
                        left     <= left - 4'd1;
                        if (left == 4'd0)
                            state <= CHECK;
                    end
                end
                CHECK: begin
                    if (bit_in != crc[4'd15 - position])
                        matches <= 1'b0;
                    if (position == 4'd15)
                        state <= STOP;
                end
                default: begin
                    good  <= matches && bit_in;
                    bad   <= !(matches && bit_in);
                    state <= REST;
                end
            endcase
        end
    end
endmodule

module serial_link (
    input        clk,
    input        reset,
    input        put,
    input  [7:0] in,
    output       full,
    output       line_out,
    input        line_in,
    input        take,
    output [7:0] out,
    output       empty,
    output       good,
    output       bad
);
    wire [7:0] to_send, received;
    wire [4:0] waiting, kept;
    wire       sent, got;

    byte_queue send_queue (
        .clk(clk), .reset(reset), .put(put), .in(in), .take(sent), .out(to_send), .count(waiting));
    transmitter sender (
        .clk(clk), .reset(reset), .in(to_send), .waiting(waiting), .take(sent), .line(line_out));
    receiver listener (
        .clk(clk), .reset(reset), .line(line_in), .put(got), .out(received), .good(good), .bad(bad));
    byte_queue receive_queue (
        .clk(clk), .reset(reset), .put(got), .in(received), .take(take), .out(out), .count(kept));

    assign full  = waiting == 5'd16;
    assign empty = kept == 5'd0;
endmodule
