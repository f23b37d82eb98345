// The tags of the tables that code outside their own items refers to by name.
#pragma once

#include "store/bytes.h"

namespace qm {

inline constexpr Tag kDefectTag = MakeTag("dfct");
inline constexpr Tag kUserTag = MakeTag("user");
inline constexpr Tag kGroupTag = MakeTag("ugrp");
inline constexpr Tag kTasksTag = MakeTag("task");
inline constexpr Tag kConfigTag = MakeTag("scfg");

}  // namespace qm
