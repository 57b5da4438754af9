// Numbers of the module's resources, for the resource compiler and the code.
#define IDS_PROJNAME 100
#define IDR_VELKCOMADAPTER 101
#define IDR_VELKCOMPROXY 102
