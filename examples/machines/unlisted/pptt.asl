// The key of no chip.
Signature : "PPTT"
Table Length : 00000000
Revision : 01
Checksum : 00
Oem ID : "ZYNDEV"
Oem Table ID : "UNLISTED"
Oem Revision : 00000001
Asl Compiler ID : "INTL"
Asl Compiler Revision : 00000000

Subtable Type : 00 [Processor Hierarchy Node]
Length : 14
Reserved : 0000
Flags (decoded below) : 00000001
Physical package : 1
ACPI Processor ID valid : 0
Processor is a thread : 0
Node is a leaf : 0
Identical Implementation : 0
Parent : 00000000
ACPI Processor ID : 00000000
Private Resource Number : 00000000

Subtable Type : 02 [ID]
Length : 1E
Reserved : 0000
Vendor ID : 4E595A44
Level1 ID : 0000000000000041
Level2 ID : 0000000000000001
Major revision : 0001
Minor revision : 0000
Spin revision : 0000
