#pragma once
// The texts of the toolkit's own dialogs, in the language of the program.

namespace kelvo::desktop {

/// From now on the toolkit's dialogs speak Italian; once is enough. UI thread only.
void SpeakItalian();

} // namespace kelvo::desktop
