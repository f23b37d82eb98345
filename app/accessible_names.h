// Names a screen reader reads for the fields of a form: each field takes the words of the
// label in front of it.
#pragma once

class QFormLayout;

namespace qm::app {

// Every field of `form` that has no accessible name yet is named by its row's label,
// without the colon and the mnemonic: "Summary:" names its line "Summary".
void NameFieldsByLabels(QFormLayout* form);

}  // namespace qm::app
