#include "container/codec/CompressionTypes.h"
