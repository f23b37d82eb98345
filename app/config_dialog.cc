// The computer description dialog: one line per field, the devices each with its flag.
#include "config_dialog.h"

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QValidator>
#include <vector>

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
  std::function<std::string()> get;
  std::function<void(const std::string&)> set;
};

template <std::size_t N>
TextField Bind(const char* label, BoundedText<N>& field) {
  auto* edit = new QLineEdit;
  LimitBytes(edit, N);
  return {label, edit, [&field] { return field.str(); },
          [&field](const std::string& text) { field = text; }};
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
      Bind("Model:", config.model),
      Bind("Brand:", config.brand),
      Bind("Operating System:", config.operatingSystem),
      Bind("Version:", config.version),
      Bind("CPU Type:", config.cpuType),
      Bind("CPU Speed (MHz):", config.cpuSpeed),
      Bind("RAM (MB):", config.ram),
      Bind("ROM:", config.rom),
      Bind("Video Controller:", config.videoController),
      Bind("Hard Disk Type:", config.hardDiskType),
      Bind("Hard Disk Size:", config.hardDiskSize),
  };
  for (const TextField& f : fields) {
    f.edit->setText(ToQt(f.get()));
    f.edit->setAccessibleName(QString(f.label).chopped(1));
    f.edit->setEnabled(editable);
    form->addRow(f.label, f.edit);
  }
  // The devices: a check box saying the machine has one, and what it is.
  struct Device {
    const char* label;
    bool& flag;
    TextField text;
    QCheckBox* box = nullptr;
  };
  std::vector<Device> devices = {{"CD-ROM", config.hasCdRom, Bind("CD-ROM:", config.cdRom)},
                                 {"Modem", config.hasModem, Bind("Modem:", config.modem)},
                                 {"Printer", config.hasPrinter, Bind("Printer:", config.printer)},
                                 {"Scanner", config.hasScanner, Bind("Scanner:", config.scanner)}};
  for (Device& d : devices) {
    d.box = new QCheckBox(d.label);
    d.box->setAccessibleName(QString("Has ") + d.label);
    d.box->setChecked(d.flag);
    d.box->setEnabled(editable);
    d.text.edit->setText(ToQt(d.text.get()));
    d.text.edit->setAccessibleName(d.label);
    d.text.edit->setEnabled(editable && d.flag);
    QObject::connect(d.box, &QCheckBox::toggled, d.text.edit, &QWidget::setEnabled);
    auto* row = new QHBoxLayout;
    row->addWidget(d.box);
    row->addWidget(d.text.edit, 1);
    form->addRow(row);
  }
  auto* monitors = new QCheckBox("Multiple Monitors");
  monitors->setAccessibleName("Multiple Monitors");
  monitors->setChecked(config.multipleMonitors);
  monitors->setEnabled(editable);
  form->addRow(monitors);
  TextField other = Bind("Other Hardware:", config.otherHardware);
  other.edit->setText(ToQt(other.get()));
  other.edit->setAccessibleName("Other Hardware");
  other.edit->setEnabled(editable);
  form->addRow(other.label, other.edit);

  auto* buttons = new QDialogButtonBox(editable ? QDialogButtonBox::Ok | QDialogButtonBox::Cancel
                                                : QDialogButtonBox::Ok);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  form->addRow(buttons);
  if (dialog.exec() != QDialog::Accepted || !editable) return false;
  for (const TextField& f : fields) f.set(FromQt(f.edit->text()));
  for (const Device& d : devices) {
    d.flag = d.box->isChecked();
    d.text.set(FromQt(d.text.edit->text()));
  }
  config.multipleMonitors = monitors->isChecked();
  other.set(FromQt(other.edit->text()));
  return true;
}

}  // namespace qm::app
