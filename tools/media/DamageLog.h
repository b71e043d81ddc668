#pragma once
// The libraries say on their log what they find wrong with a file, and go on. What they say there
// while they read is damage, and must not be lost.

#include "tools/media/Report.h"

namespace kelvo::media_tool {

/// From now on nothing of the log reaches standard error by itself.
void KeepLog();
/// Forgets what was said so far, for example while a file's kind was being found out.
void ForgetLog();
/// Reports the errors since the last call as damage.
void ReportLog(Report& report);

} // namespace kelvo::media_tool
