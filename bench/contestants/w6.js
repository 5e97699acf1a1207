// w6.js INPUT OUTPUT: ISO 8583 requests decoded into their values and encoded again by the npm package iso_8583. It
// always writes two bitmaps; the second, which is empty here, is taken out again.
const fs = require("fs");
const Iso8583 = require("iso_8583");

function needed(result) {
  if (result.error) throw new Error(JSON.stringify(result));
  return result;
}

function withOneBitmap(message) {
  if (message.readBigUInt64BE(12) !== 0n) throw new Error("a field above 64");
  message[4] &= 0x7f;
  return [message.subarray(0, 12), message.subarray(20)];
}

const input = fs.readFileSync(process.argv[2]);
const output = [];
for (let at = 0; at < input.length;) {
  const end = at + 2 + input.readUInt16BE(at);
  const values = needed(new Iso8583().getIsoJSON(input.subarray(at, end)));
  const [front, rest] = withOneBitmap(needed(new Iso8583(values).getRawMessage()));
  const length = Buffer.alloc(2);
  length.writeUInt16BE(front.length + rest.length);
  output.push(length, front, rest);
  at = end;
}
fs.writeFileSync(process.argv[3], Buffer.concat(output));
