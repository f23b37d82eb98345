// The computer description dialog: one line per field, the devices each with its flag.
#include "config_dialog.h"

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QPushButton>
#include <QScreen>
#include <QValidator>
#include <vector>

#include "people/machine_capture.h"
#include "people/test_config.h"
#include "qt_ui.h"

namespace qm::app {
namespace {

class ByteLimit : public QValidator {
 public:
  ByteLimit(std::size_t bytes, QObject* parent) : QValidator(parent), bytes_(bytes) {}
  State validate(QString& input, int& /*pos*/) const override {
    return static_cast<std::size_t>(input.toUtf8().size()) <= bytes_ ? Acceptable : Invalid;
  }

 private:
  std::size_t bytes_;
};

// One text field of the configuration and how it is bound.
struct TextField {
  const char* label;
  QLineEdit* edit;
  std::function<std::string(const CTestConfig&)> get;
  std::function<void(CTestConfig&, const std::string&)> set;
};

template <std::size_t N>
TextField Bind(const char* label, BoundedText<N> CTestConfig::*field) {
  auto* edit = new QLineEdit;
  LimitBytes(edit, N);
  return {label, edit, [field](const CTestConfig& c) { return (c.*field).str(); },
          [field](CTestConfig& c, const std::string& text) { c.*field = text; }};
}

// The name of the graphics adapter as OpenGL gives it; empty when no context can be made
// or only a software renderer answers, which says nothing of the machine.
std::string VideoController() {
  QOpenGLContext context;
  if (!context.create()) return {};
  QOffscreenSurface surface;
  surface.setFormat(context.format());
  surface.create();
  if (!context.makeCurrent(&surface)) return {};
  const auto* renderer =
      reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER));
  const std::string name = renderer != nullptr ? renderer : "";
  context.doneCurrent();
  for (const char* software : {"llvmpipe", "softpipe", "Software Rasterizer"}) {
    if (name.find(software) != std::string::npos) return {};
  }
  return name;
}

// What the window system knows of the display: the adapter, whether there is more than one
// screen, and the screens' sizes in pixels as other hardware when nothing is there yet.
void CaptureDisplay(CTestConfig& config) {
  const QList<QScreen*> screens = QGuiApplication::screens();
  if (screens.isEmpty()) return;
  if (const std::string adapter = VideoController(); !adapter.empty()) {
    config.videoController = adapter;
  }
  config.multipleMonitors = screens.size() > 1;
  if (!config.otherHardware.empty()) return;
  QStringList sizes;
  for (const QScreen* screen : screens) {
    const QSize pixels = screen->size() * screen->devicePixelRatio();
    sizes << QString("%1x%2").arg(pixels.width()).arg(pixels.height());
  }
  config.otherHardware = FromQt((screens.size() > 1 ? "Screens: " : "Screen: ") + sizes.join(", "));
}

}  // namespace

void LimitBytes(QLineEdit* edit, std::size_t bytes) {
  edit->setValidator(new ByteLimit(bytes, edit));
}

bool EditComputerConfig(QWidget* parent, CTestConfig& config, bool editable) {
  QDialog dialog(parent);
  dialog.setWindowTitle("Computer Configuration");
  dialog.setMinimumWidth(440);
  auto* form = new QFormLayout(&dialog);
  std::vector<TextField> fields = {
      Bind("Model:", &CTestConfig::model),
      Bind("Brand:", &CTestConfig::brand),
      Bind("Operating System:", &CTestConfig::operatingSystem),
      Bind("Version:", &CTestConfig::version),
      Bind("CPU Type:", &CTestConfig::cpuType),
      Bind("CPU Speed (MHz):", &CTestConfig::cpuSpeed),
      Bind("RAM (MB):", &CTestConfig::ram),
      Bind("ROM:", &CTestConfig::rom),
      Bind("Video Controller:", &CTestConfig::videoController),
      Bind("Hard Disk Type:", &CTestConfig::hardDiskType),
      Bind("Hard Disk Size:", &CTestConfig::hardDiskSize),
  };
  for (const TextField& f : fields) {
    f.edit->setAccessibleName(QString(f.label).chopped(1));
    f.edit->setEnabled(editable);
    form->addRow(f.label, f.edit);
  }
  // The devices: a check box saying the machine has one, and what it is.
  struct Device {
    const char* label;
    bool CTestConfig::*flag;
    TextField text;
    QCheckBox* box = nullptr;
  };
  std::vector<Device> devices = {
      {"CD-ROM", &CTestConfig::hasCdRom, Bind("CD-ROM:", &CTestConfig::cdRom)},
      {"Modem", &CTestConfig::hasModem, Bind("Modem:", &CTestConfig::modem)},
      {"Printer", &CTestConfig::hasPrinter, Bind("Printer:", &CTestConfig::printer)},
      {"Scanner", &CTestConfig::hasScanner, Bind("Scanner:", &CTestConfig::scanner)}};
  for (Device& d : devices) {
    d.box = new QCheckBox(d.label);
    d.box->setAccessibleName(QString("Has ") + d.label);
    d.box->setEnabled(editable);
    d.text.edit->setAccessibleName(d.label);
    auto* row = new QHBoxLayout;
    row->addWidget(d.box);
    row->addWidget(d.text.edit, 1);
    form->addRow(row);
  }
  auto* monitors = new QCheckBox("Multiple Monitors");
  monitors->setAccessibleName("Multiple Monitors");
  monitors->setEnabled(editable);
  form->addRow(monitors);
  TextField other = Bind("Other Hardware:", &CTestConfig::otherHardware);
  other.edit->setAccessibleName("Other Hardware");
  other.edit->setEnabled(editable);
  form->addRow(other.label, other.edit);

  const auto show = [&](const CTestConfig& c) {
    for (const TextField& f : fields) f.edit->setText(ToQt(f.get(c)));
    for (const Device& d : devices) {
      d.box->setChecked(c.*d.flag);
      d.text.edit->setText(ToQt(d.text.get(c)));
    }
    monitors->setChecked(c.multipleMonitors);
    other.edit->setText(ToQt(other.get(c)));
  };
  const auto keep = [&](CTestConfig& c) {
    for (const TextField& f : fields) f.set(c, FromQt(f.edit->text()));
    for (const Device& d : devices) {
      c.*d.flag = d.box->isChecked();
      d.text.set(c, FromQt(d.text.edit->text()));
    }
    c.multipleMonitors = monitors->isChecked();
    other.set(c, FromQt(other.edit->text()));
  };
  show(config);
  for (const Device& d : devices) {
    d.text.edit->setEnabled(editable && d.box->isChecked());
    QObject::connect(d.box, &QCheckBox::toggled, d.text.edit, &QWidget::setEnabled);
  }

  // Capture fills the fields from the machine over what they show now; OK keeps it.
  auto* capture = new QPushButton("Ca&pture from This Computer");
  capture->setAccessibleName("Capture from This Computer");
  capture->setEnabled(editable);
  capture->setAutoDefault(false);
  QObject::connect(capture, &QPushButton::clicked, &dialog, [&] {
    CTestConfig draft;
    keep(draft);
    CaptureThisComputer(draft);
    CaptureDisplay(draft);
    show(draft);
  });
  form->addRow(capture);

  auto* buttons = new QDialogButtonBox(editable ? QDialogButtonBox::Ok | QDialogButtonBox::Cancel
                                                : QDialogButtonBox::Ok);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  form->addRow(buttons);
  if (dialog.exec() != QDialog::Accepted || !editable) return false;
  keep(config);
  return true;
}

}  // namespace qm::app
