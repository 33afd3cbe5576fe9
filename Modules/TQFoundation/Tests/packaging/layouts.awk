# Reads `readelf --debug-dump=info`. Prints a line for each size, alignment, offset of a member or a
# base, and slot of a virtual function in namespace tq, such as "tq::Rect byte_size 32".

# An entry starts; depth is its nesting.
/Abbrev Number: .*DW_TAG_/ {
  match($0, /<[0-9]+>/)
  depth = substr($0, RSTART + 1, RLENGTH - 2) + 0
  names[depth] = /DW_TAG_inheritance/ ? "(base " ++bases[depth] ")" : "?"
  bases[depth + 1] = 0
}

/ DW_AT_name / {
  sub(/.* DW_AT_name +: (\(indirect [^)]*\): )?/, "")
  names[depth] = $0
}

names[1] == "tq" && / DW_AT_(byte_size|alignment|data_member_location|data_bit_offset|vtable_elem_location)[ :]/ {
  path = "tq"
  for (i = 2; i <= depth; i++) path = path "::" names[i]
  sub(/.* DW_AT_/, "")
  sub(/ *: +/, " ")
  print path " " $0
}
