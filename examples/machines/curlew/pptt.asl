// Processor nodes full of bytes of value 2, the type of the ID structure that follows them; and a
// second ID structure, which does not count.
Signature : "PPTT"
Table Length : 00000000
Revision : 01
Checksum : 00
Oem ID : "ZYNDEV"
Oem Table ID : "CURLEW  "
Oem Revision : 00000001
Asl Compiler ID : "INTL"
Asl Compiler Revision : 00000000

Subtable Type : 01 [Cache Type]
Length : 18
Reserved : 0000
Flags (decoded below) : 00000001
Size valid : 1
Number of Sets valid : 0
Associativity valid : 0
Allocation Type valid : 0
Cache Type valid : 0
Write Policy valid : 0
Line Size valid : 0
Next Level of Cache : 00000000
Size : 00020202
Number of Sets : 00000000
Associativity : 00
Attributes : 00
Allocation Type : 0
Cache Type : 0
Write Policy : 0
Line Size : 0000

Subtable Type : 01 [Cache Type]
Length : 18
Reserved : 0000
Flags (decoded below) : 00000001
Size valid : 1
Number of Sets valid : 0
Associativity valid : 0
Allocation Type valid : 0
Cache Type valid : 0
Write Policy valid : 0
Line Size valid : 0
Next Level of Cache : 00000000
Size : 02020202
Number of Sets : 00000000
Associativity : 00
Attributes : 00
Allocation Type : 0
Cache Type : 0
Write Policy : 0
Line Size : 0000

Subtable Type : 00 [Processor Hierarchy Node]
Length : 1C
Reserved : 0000
Flags (decoded below) : 00000001
Physical package : 1
ACPI Processor ID valid : 0
Processor is a thread : 0
Node is a leaf : 0
Identical Implementation : 0
Parent : 00000000
ACPI Processor ID : 00000000
Private Resource Number : 00000002
Private Resource : 00000024
Private Resource : 0000003C

Subtable Type : 00 [Processor Hierarchy Node]
Length : 1C
Reserved : 0000
Flags (decoded below) : 00000002
Physical package : 0
ACPI Processor ID valid : 1
Processor is a thread : 0
Node is a leaf : 0
Identical Implementation : 0
Parent : 00000054
ACPI Processor ID : 00000002
Private Resource Number : 00000002
Private Resource : 00000024
Private Resource : 0000003C

Subtable Type : 02 [ID]
Length : 1E
Reserved : 0000
Vendor ID : 4E595A44
Level1 ID : 0000000000000021
Level2 ID : 0000000000010001
Major revision : 0001
Minor revision : 0000
Spin revision : 0000

Subtable Type : 02 [ID]
Length : 1E
Reserved : 0000
Vendor ID : 4E595A44
Level1 ID : 0000000000000011
Level2 ID : 0000000000000001
Major revision : 0001
Minor revision : 0000
Spin revision : 0000
