// A known chip, whose FADT has an OEM Revision close to the one that stands for a chip.
Signature : "FACP"
Table Length : 00000000
Revision : 01
Checksum : 00
Oem ID : "ZYNDEV"
Oem Table ID : "CURLEW  "
Oem Revision : 00B10901
#include "../fadt-fields.inc"
