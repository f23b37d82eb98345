// The commands of the File menu that act on the session rather than on items: the
// password of the person working, or of a single-user project.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "ui/ui.h"

namespace qm {

class CAppPreferences;
class CDBDoc;
class EditMarks;

// The password "Change Password..." starts from: the own password of the user logged in
// to a multi-user project, who needs the right to set it, or the password of a single-user
// project. Nothing when the session may not change a password.
std::optional<std::string> CurrentPassword(const CDBDoc& doc);

// Stores `password` (empty: none) where CurrentPassword found the old one. A user's own
// record is written under its record lock, and a remembered login of that user takes the
// new password too, so that the next start still logs in by itself. False after telling
// the person why nothing changed: the record is open in a window (`marks`, may be null)
// or in use by another user, or the store failed.
bool StorePassword(CDBDoc& doc, const EditMarks* marks, CAppPreferences* preferences,
                   const std::string& password, ui::Ui& ui);

}  // namespace qm
