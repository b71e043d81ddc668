#pragma once
// The exhibits of the gallery, each shown until the visitor ends it. What the visitor did goes to
// standard output, one line each, so that a test can read it.

#include <string>

namespace kelvo::gallery {

/// What stood behind the exhibit's name on the command line; empty for nothing.
std::string Argument();
/// Writes one line and lets it out at once.
void Report(const std::string& line);

// BoxExhibits.cpp: boxes and the dialogs that ask.
void ShowMessageBoxes();
void ShowInputBox();
void ShowStringDialog();
void ShowListDialog();
void ShowControls();

// PictureExhibits.cpp: owner-drawn buttons, pictures, frames, help tips, editing in place.
void ShowPictures();

// SystemExhibits.cpp: the dialogs that the desktop has for every program.
void ShowOpenFile();
void ShowSaveFile();
void ShowFontChoice();

// TextExhibits.cpp: the about dialog with a file to edit, rich text in a control.
void ShowAbout();
void ShowRichText();

// ToolExhibits.cpp: a bar of bitmap buttons, their tips, a menu of buttons.
void ShowTools();

// WorkExhibits.cpp: long work with its progress, the window for a short text.
void ShowProgress();
/// Rewrites the picture of the film that the argument names.
void ShowRecompression();
void ShowInformationWindow();

} // namespace kelvo::gallery
