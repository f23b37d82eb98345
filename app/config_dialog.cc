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
#include <QScrollArea>
#include <QVBoxLayout>
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

template <std::size_t N>
ComputerConfigForm::TextField Bind(const char* label, BoundedText<N> CTestConfig::*field) {
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

QWidget* Scrolling(QWidget* content) {
  auto* area = new QScrollArea;
  area->setWidget(content);
  area->setWidgetResizable(true);
  area->setFrameShape(QFrame::NoFrame);
  return area;
}

void LimitBytes(QLineEdit* edit, std::size_t bytes) {
  edit->setValidator(new ByteLimit(bytes, edit));
}

ComputerConfigForm::ComputerConfigForm(QWidget* parent) : QWidget(parent) {
  auto* form = new QFormLayout(this);
  form->setContentsMargins(0, 0, 0, 0);
  fields_ = {
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
  for (const TextField& f : fields_) {
    f.edit->setAccessibleName(QString(f.label).chopped(1));
    form->addRow(f.label, f.edit);
  }
  // The devices: a check box saying the machine has one, and what it is.
  devices_ = {{"CD-ROM", &CTestConfig::hasCdRom, Bind("CD-ROM:", &CTestConfig::cdRom)},
              {"Modem", &CTestConfig::hasModem, Bind("Modem:", &CTestConfig::modem)},
              {"Printer", &CTestConfig::hasPrinter, Bind("Printer:", &CTestConfig::printer)},
              {"Scanner", &CTestConfig::hasScanner, Bind("Scanner:", &CTestConfig::scanner)}};
  for (Device& d : devices_) {
    d.box = new QCheckBox(d.label);
    d.box->setAccessibleName(QString("Has ") + d.label);
    d.text.edit->setAccessibleName(d.label);
    auto* row = new QHBoxLayout;
    row->addWidget(d.box);
    row->addWidget(d.text.edit, 1);
    form->addRow(row);
  }
  monitors_ = new QCheckBox("Multiple Monitors");
  monitors_->setAccessibleName("Multiple Monitors");
  form->addRow(monitors_);
  other_ = Bind("Other Hardware:", &CTestConfig::otherHardware);
  other_.edit->setAccessibleName("Other Hardware");
  form->addRow(other_.label, other_.edit);

  // Capture fills the fields from the machine over what they show now.
  capture_ = new QPushButton("Ca&pture from This Computer");
  capture_->setAccessibleName("Capture from This Computer");
  capture_->setAutoDefault(false);
  connect(capture_, &QPushButton::clicked, this, [this] {
    CTestConfig draft;
    Keep(draft);
    CaptureThisComputer(draft);
    CaptureDisplay(draft);
    Show(draft);
    if (onEdited) onEdited();
  });
  form->addRow(capture_);

  const auto edited = [this] {
    if (onEdited && !showing_) onEdited();
  };
  for (const TextField& f : fields_) connect(f.edit, &QLineEdit::textEdited, this, edited);
  connect(other_.edit, &QLineEdit::textEdited, this, edited);
  for (const Device& d : devices_) {
    connect(d.text.edit, &QLineEdit::textEdited, this, edited);
    connect(d.box, &QCheckBox::toggled, this, [this, &d, edited] {
      d.text.edit->setEnabled(editable_ && d.box->isChecked());
      edited();
    });
  }
  connect(monitors_, &QCheckBox::toggled, this, edited);
}

void ComputerConfigForm::Show(const CTestConfig& config) {
  showing_ = true;
  for (const TextField& f : fields_) f.edit->setText(ToQt(f.get(config)));
  for (const Device& d : devices_) {
    d.box->setChecked(config.*d.flag);
    d.text.edit->setText(ToQt(d.text.get(config)));
  }
  monitors_->setChecked(config.multipleMonitors);
  other_.edit->setText(ToQt(other_.get(config)));
  showing_ = false;
  SetEditable(editable_);
}

void ComputerConfigForm::Keep(CTestConfig& config) const {
  for (const TextField& f : fields_) f.set(config, FromQt(f.edit->text()));
  for (const Device& d : devices_) {
    config.*d.flag = d.box->isChecked();
    d.text.set(config, FromQt(d.text.edit->text()));
  }
  config.multipleMonitors = monitors_->isChecked();
  other_.set(config, FromQt(other_.edit->text()));
}

void ComputerConfigForm::SetEditable(bool editable) {
  editable_ = editable;
  for (const TextField& f : fields_) f.edit->setEnabled(editable);
  for (const Device& d : devices_) {
    d.box->setEnabled(editable);
    d.text.edit->setEnabled(editable && d.box->isChecked());
  }
  monitors_->setEnabled(editable);
  other_.edit->setEnabled(editable);
  capture_->setEnabled(editable);
}

bool EditComputerConfig(QWidget* parent, CTestConfig& config, bool editable) {
  QDialog dialog(parent);
  dialog.setWindowTitle("Computer Configuration");
  dialog.setMinimumWidth(440);
  auto* layout = new QVBoxLayout(&dialog);
  auto* form = new ComputerConfigForm;
  form->SetEditable(editable);
  form->Show(config);
  layout->addWidget(form);
  auto* buttons = new QDialogButtonBox(editable ? QDialogButtonBox::Ok | QDialogButtonBox::Cancel
                                                : QDialogButtonBox::Ok);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  layout->addWidget(buttons);
  if (dialog.exec() != QDialog::Accepted || !editable) return false;
  form->Keep(config);
  return true;
}

}  // namespace qm::app
