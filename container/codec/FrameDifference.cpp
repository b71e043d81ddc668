#include "container/codec/FrameDifference.h"
