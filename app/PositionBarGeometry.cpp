#include "app/PositionBarGeometry.h"

#include "platform/desktop/dialog_units.h"

namespace kelvo {
namespace {

constexpr LONG kLeftOfToolDialog = 173;
constexpr LONG kToolDialogWidthUnits = 86;
constexpr char kToolDialogFont[] = "MS Sans Serif";
constexpr int kToolDialogPoints = 8;

} // namespace

LONG PositionBarLeft() {
    const platform::DialogUnits units(kToolDialogFont, kToolDialogPoints);
    return kLeftOfToolDialog + units.Horizontal(kToolDialogWidthUnits);
}

} // namespace kelvo
