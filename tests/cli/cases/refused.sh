# The first refused message ends the run: the line names file, record, offset and field.
printf '1,A,,[],x\n2,B,,[A,1,[];C]\n3,C,,[],z\n' >orders
cvt2 parse -m Order -f toy --framing line --json orders
