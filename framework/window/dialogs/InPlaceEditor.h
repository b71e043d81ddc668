#pragma once
// Editing a value in place, inside of a dialog: it sees every message of the dialog.

#include "platform/base/types.h"

namespace kelvo {

class CDialog;

class InPlaceEditor {
public:
    explicit InPlaceEditor(CDialog& dialog) : dialog_(dialog) {}
    InPlaceEditor(const InPlaceEditor&) = delete;
    InPlaceEditor& operator=(const InPlaceEditor&) = delete;

    /// Sees a message of the dialog; others see it, too.
    void See(UINT message, WPARAM wparam, LPARAM lparam);

private:
    CDialog& dialog_;
};

} // namespace kelvo
