// Capture from this computer: what Linux tells of the machine it runs on, written into a
// computer's description. Screens and the video controller are the window program's to
// add; this part needs no display.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "people/test_config.h"

namespace qm {

// The name of the default printer as CUPS knows it, or nothing when there is none or
// CUPS does not answer.
std::optional<std::string> DefaultPrinterFromCups();

// Where the facts of a machine are read: the files of the system below `root`, and the
// default printer from `defaultPrinter`.
struct MachineFacts {
  std::filesystem::path root = "/";
  std::function<std::optional<std::string>()> defaultPrinter = DefaultPrinterFromCups;
};

// Fills `config` from the machine: model, brand and ROM from DMI, the operating system
// from os-release and its version from the kernel release, the processor's name and
// speed, the memory rounded up to whole megabytes, the first disk's type and size (more
// disks into other hardware), the optical drive and the default printer. A fact the
// machine does not tell leaves its field as it was; with no default printer, or no
// optical drive among the block devices, the flag is cleared and the text stays. Every
// text is cut to its field's width.
void CaptureThisComputer(CTestConfig& config, const MachineFacts& facts = {});

}  // namespace qm
