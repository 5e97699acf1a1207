// w4.js INPUT OUTPUT: JSON lines with other names and a nested list.
const fs = require("fs");

function mapped(order) {
  const date = order.date;
  const time = order.time;
  const out = {
    id: order.orderId,
    issued: `${date.slice(0, 4)}-${date.slice(4, 6)}-${date.slice(6, 8)}T` +
      `${time.slice(0, 2)}:${time.slice(2, 4)}:${time.slice(4, 6)}`,
    buyer: { no: order.custNo, name: order.custName },
    shipTo: order.address,
  };
  if (order.remark !== "") out.note = order.remark;
  out.total = { currency: order.currency, amount: order.amount };
  out.lines = order.items.map((item, i) =>
    ({ no: i + 1, sku: item.sku, qty: item.qty, desc: item.desc, price: item.price }));
  return out;
}

const lines = fs.readFileSync(process.argv[2], "utf8").split("\n");
lines.pop();
fs.writeFileSync(process.argv[3], lines.map((line) => JSON.stringify(mapped(JSON.parse(line))) + "\n").join(""));
