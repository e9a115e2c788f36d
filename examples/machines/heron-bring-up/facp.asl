// The OEM Revision that alone stands for a chip.
Signature : "FACP"
Table Length : 00000000
Revision : 01
Checksum : 00
Oem ID : "ZYNDEV"
Oem Table ID : "HERONBU "
Oem Revision : 00B10900
#include "../fadt-fields.inc"
