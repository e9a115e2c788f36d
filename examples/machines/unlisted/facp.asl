// A chip that the map of keys lacks.
Signature : "FACP"
Table Length : 00000000
Revision : 01
Checksum : 00
Oem ID : "ZYNDEV"
Oem Table ID : "UNLISTED"
Oem Revision : 00000001
#include "../fadt-fields.inc"
