#include "container/codec/ColourRuns.h"
