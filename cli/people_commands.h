// quillmark-cli users and user: the people of an open project, their forms, and new ones.
#pragma once

#include <iosfwd>

#include "args.h"
#include "ui/ui.h"

namespace qm {
class CDBDoc;
}

namespace qm::cli {

// The options of the people commands that take a value.
inline constexpr const char* kPeopleValueOptions[] = {"first", "last",    "login", "user-password",
                                                      "group", "company", "email"};

// Runs `users FILE ...` or `user FILE ...` on the open project; the exit code.
int RunPeopleCommand(CDBDoc& doc, const Args& args, ui::Ui& ui, std::ostream& out,
                     std::ostream& err);

}  // namespace qm::cli
