// The exported copy of the queue, whose members are written in its header. The library does not call them, so
// CMakeLists.txt sets compiler options that emit them nevertheless.
#include "gen_index_compressor_queue_sys.h"
