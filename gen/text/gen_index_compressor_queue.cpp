// The exported copy of the queue, which is written in its header. Nothing here uses the members: CMakeLists.txt has
// them kept.
#include "gen_index_compressor_queue_sys.h"
