// quillmark-cli defects and defect: the defects of an open project.
#pragma once

#include <iosfwd>

#include "args.h"
#include "ui/ui.h"

namespace qm {
class CDBDoc;
}

namespace qm::cli {

// The options of the defect commands that take a value.
inline constexpr const char* kDefectValueOptions[] = {
    "sort",        "summary",  "type",          "priority",   "severity", "product", "component",
    "description", "found-by", "version-found", "to",         "by",       "date",    "notes",
    "version",     "hours",    "completion",    "resolution", "numbers"};

// Runs `defects FILE ...` or `defect FILE ...` on the open project; the exit code.
int RunDefectCommand(CDBDoc& doc, const Args& args, ui::Ui& ui, std::ostream& out,
                     std::ostream& err);

}  // namespace qm::cli
