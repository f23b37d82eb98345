// Shared parts of the Ui seam.
#include "ui/ui.h"

#include <utility>

namespace qm::ui {

namespace {
std::function<void(std::string_view)>& Sink() {
  static std::function<void(std::string_view)> sink;
  return sink;
}
}  // namespace

void Ui::Tell(std::string text, Icon icon, std::string caption) {
  (void)Ask({std::move(text), std::move(caption), icon, Buttons::kOk});
}

void DebugOutput(std::string_view text) {
  if (Sink()) Sink()(text);
}

std::function<void(std::string_view)> SetDebugSink(std::function<void(std::string_view)> sink) {
  return std::exchange(Sink(), std::move(sink));
}

}  // namespace qm::ui
