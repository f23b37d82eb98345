// The change text of a saved defect: what an edit changed, in words, for the %CHNG% of the
// mail that tells the people concerned. The text is never stored.
#pragma once

#include <string>

#include "defects/defect.h"
#include "defects/defect_lookups.h"

namespace qm {

// Compares the defect as it was with the defect as it will be and writes what changed to
// `text`, cleared first; true when the text is not empty. `newDefect` is a Clone of
// `oldDefect` edited since: rows of both tables pair up by session id, a session id of
// the new defect only is an added row and one of the old defect only a deleted row.
//
// The comparisons run in a fixed order: the defect's fields, the old reported-by rows,
// the new ones, the notification list, the old events, the new ones. Lines end in a
// single CR. Names come from `lookups`, except the entered-by names, which are field 28
// of each defect as the defect itself reads it.
bool BuildChangeText(const DefectLookups& lookups, const CDefect& oldDefect,
                     const CDefect& newDefect, std::string& text);

}  // namespace qm
