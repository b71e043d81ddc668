#include "container/codec/Lzss.h"
