#pragma once
// Another name for wave_format.h, until its includers use that one.

#include "platform/base/wave_format.h"
