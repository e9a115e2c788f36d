// A PPTT of another chip, which is not looked at.
Signature : "PPTT"
Table Length : 00000000
Revision : 01
Checksum : 00
Oem ID : "ZYNDEV"
Oem Table ID : "HERONBU "
Oem Revision : 00000001
Asl Compiler ID : "INTL"
Asl Compiler Revision : 00000000

Subtable Type : 02 [ID]
Length : 1E
Reserved : 0000
Vendor ID : 4E595A44
Level1 ID : 0000000000000021
Level2 ID : 0000000000000001
Major revision : 0001
Minor revision : 0000
Spin revision : 0000
