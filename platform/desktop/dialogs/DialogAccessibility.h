#pragma once
// Dialogs as assistive programs see them. UI thread only.

namespace kelvo::desktop {

/// From now on frames that the window manager knows as dialogs are dialogs to assistive programs,
/// too, under the name that stands in their title.
void DescribeDialogsToAssistants();

} // namespace kelvo::desktop
