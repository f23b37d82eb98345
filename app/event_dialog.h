// The Qt dialog of one defect event, bound to the EventDialog model: the model decides the
// fields, their checks, the messages and the buttons; the dialog only shows them.
#pragma once

#include <optional>

#include "defects/event_dialogs.h"

class QWidget;

namespace qm {
class CDBDoc;
}

namespace qm::app {

// Runs the dialog of `event` in `mode`, modal over `parent`; the closing button, or
// nothing for Cancel.
std::optional<EventDialogResult> RunEventDialog(QWidget* parent, CDBDoc& doc, CDefectEvent& event,
                                                EventDialogMode mode);

}  // namespace qm::app
