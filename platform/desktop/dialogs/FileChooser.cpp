#include "platform/desktop/dialogs/FileChooser.h"

#include "platform/base/file_names.h"
#include "platform/desktop/dialogs/ItalianTexts.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include <sys/stat.h>

#include <algorithm>
#include <cstring>

namespace kelvo::desktop {

namespace {

const QString kOpen = QStringLiteral("Apri");
const QString kSave = QStringLiteral("Salva");
const QString kSaveTitle = QStringLiteral("Salva con nome");
const QString kCancel = QStringLiteral("Annulla");
const QString kLookIn = QStringLiteral("Cerca in:");
const QString kFileName = QStringLiteral("Nome file:");
const QString kFileType = QStringLiteral("Tipo file:");
const QString kOddListName = QStringLiteral("Altri nomi");
const QString kNoSuchFolder = QStringLiteral("Il percorso non esiste:\n");

constexpr int kOddListHeight = 72;
constexpr std::size_t kMostFilters = 100;

bool IsFolder(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool Exists(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0;
}

std::string FolderOf(const std::string& path) {
    const std::size_t separator = path.rfind('/');
    if (separator == std::string::npos) return {};
    return path.substr(0, std::max<std::size_t>(separator, 1));
}

std::string NameIn(const std::string& path) {
    const std::size_t separator = path.rfind('/');
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

// "*.*" means all files, those without a dot, too.
QStringList PatternsOf(const FileFilter& filter) {
    QStringList patterns = QString::fromStdString(filter.patterns).split(u';', Qt::SkipEmptyParts);
    for (QString& pattern : patterns) {
        pattern = pattern.trimmed();
        if (pattern == QStringLiteral("*.*")) pattern = QStringLiteral("*");
    }
    return patterns;
}

} // namespace

std::vector<FileFilter> ParseFilters(const char* filters) {
    std::vector<FileFilter> parsed;
    while (filters != nullptr && *filters != '\0' && parsed.size() < kMostFilters) {
        FileFilter filter;
        filter.description = filters;
        filters += filter.description.size() + 1;
        filter.patterns = filters;
        filters += filter.patterns.size() + 1;
        parsed.push_back(std::move(filter));
    }
    return parsed;
}

FileChooser::FileChooser(const Settings& settings)
    : filters_(settings.filters), folder_must_exist_(settings.folder_must_exist) {
    SpeakItalian();
    setOptions(DontUseNativeDialog | DontConfirmOverwrite | HideNameFilterDetails |
               DontResolveSymlinks);
    setFileMode(AnyFile);
    setViewMode(List);
    setAcceptMode(settings.mode);
    SetUpTexts(settings);
    SetUpFilters(settings.filters, settings.filter);
    name_edit_ = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    AddOddList();
    StartAt(settings);
    const auto* const list = findChild<QAbstractItemView*>(QStringLiteral("listView"));
    if (list != nullptr) {
        connect(list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
                [this] { TakeSelection(); });
    }
    // The dialog itself reports only some of the ways into a folder.
    if (const auto* const files = findChild<QFileSystemModel*>()) {
        connect(files, &QFileSystemModel::rootPathChanged, this, [this] {
            RefreshOddList();
            if (on_folder_entered) on_folder_entered();
        });
    }
    connect(this, &QFileDialog::filterSelected, this, [this] { RefreshOddList(); });
    if (name_edit_ == nullptr) return;
    connect(name_edit_, &QLineEdit::textChanged, this, [this] { LetTypedNamesPass(); });
    connect(name_edit_, &QLineEdit::textEdited, this, [this] {
        is_typed_ = true;
        ForgetOdd();
    });
}

// The list also follows what is typed.
void FileChooser::TakeSelection() {
    const auto* const list = findChild<QAbstractItemView*>(QStringLiteral("listView"));
    const QModelIndexList rows = list->selectionModel()->selectedRows();
    current_ = rows.isEmpty()
                   ? std::string()
                   : names_.BytesOf(rows.first().data(QFileSystemModel::FilePathRole).toString());
    if (rows.isEmpty()) return;
    ForgetOdd();
    is_typed_ = is_typed_ && name_edit_->hasFocus();
    if (on_selected) on_selected();
}

// The toolkit closes the way to folders that it cannot find; they may only be spelt differently,
// and where there is none, the person is told.
void FileChooser::LetTypedNamesPass() const {
    const auto* const buttons = findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"));
    if (buttons == nullptr || name_edit_->text().isEmpty()) return;
    QPushButton* const button = buttons->button(
        acceptMode() == AcceptOpen ? QDialogButtonBox::Open : QDialogButtonBox::Save);
    if (button != nullptr) button->setEnabled(true);
}

void FileChooser::SetUpTexts(const Settings& settings) {
    const bool opens = settings.mode == AcceptOpen;
    setWindowTitle(!settings.title.isEmpty() ? settings.title : opens ? kOpen : kSaveTitle);
    setLabelText(Accept, opens ? kOpen : kSave);
    setLabelText(Reject, kCancel);
    setLabelText(LookIn, kLookIn);
    setLabelText(FileName, kFileName);
    setLabelText(FileType, kFileType);
}

void FileChooser::SetUpFilters(const std::vector<FileFilter>& filters, std::size_t selected) {
    QStringList texts;
    for (const FileFilter& filter : filters) {
        texts << QStringLiteral("%1 (%2)").arg(QString::fromStdString(filter.description),
                                               PatternsOf(filter).join(u' '));
    }
    if (texts.isEmpty()) return;
    setNameFilters(texts);
    selectNameFilter(texts[static_cast<qsizetype>(std::min(selected, filters.size() - 1))]);
}

void FileChooser::StartAt(const Settings& settings) {
    std::string name = settings.file_name;
    std::ranges::replace(name, '\\', '/');
    const std::string folder =
        name.find('/') == std::string::npos ? settings.folder : FolderOf(name);
    const auto existing = folder.empty() ? std::nullopt : platform::ExistingFileName(folder);
    if (existing) Enter(*existing);
    RefreshOddList();
    name = NameIn(name);
    if (name.empty()) return;
    const std::string path = Folder() + '/' + name;
    if (Exists(path) && ReadableName(name).toStdString() != name) {
        const auto items = odd_list_->findItems(ReadableName(name), Qt::MatchExactly);
        if (!items.isEmpty()) odd_list_->setCurrentItem(items.first());
        return;
    }
    selectFile(QString::fromStdString(name));
}

// ---- names that the toolkit cannot spell ----

void FileChooser::AddOddList() {
    odd_list_ = new QListWidget(this);
    odd_list_->setAccessibleName(kOddListName);
    odd_list_->setMaximumHeight(kOddListHeight);
    odd_list_->hide();
    if (auto* const grid = qobject_cast<QGridLayout*>(layout())) {
        grid->addWidget(odd_list_, grid->rowCount(), 0, 1, grid->columnCount());
    }
    connect(odd_list_, &QListWidget::currentItemChanged, this,
            [this](const QListWidgetItem* item) { SelectOdd(item); });
    connect(odd_list_, &QListWidget::itemActivated, this,
            [this](const QListWidgetItem* item) { OpenOdd(*item); });
}

void FileChooser::RefreshOddList() {
    ForgetOdd();
    const QSignalBlocker quiet(odd_list_);
    odd_list_->clear();
    const QStringList patterns = CurrentPatterns();
    for (const OddEntry& entry : OddEntriesOf(Folder())) {
        const QString text = ReadableName(entry.name);
        if (!entry.is_folder && !patterns.isEmpty() && !QDir::match(patterns, text)) continue;
        auto* const item = new QListWidgetItem(entry.is_folder ? text + u'/' : text, odd_list_);
        item->setData(Qt::UserRole, QByteArray::fromStdString(entry.name));
    }
    odd_list_->setVisible(odd_list_->count() > 0);
}

void FileChooser::SelectOdd(const QListWidgetItem* item) {
    if (item == nullptr) return;
    const std::string name = item->data(Qt::UserRole).toByteArray().toStdString();
    odd_selected_ = Folder() + '/' + name;
    is_typed_ = false;
    if (name_edit_ != nullptr) name_edit_->setText(item->text());
    if (on_selected) on_selected();
}

void FileChooser::OpenOdd(const QListWidgetItem& item) {
    SelectOdd(&item);
    accept();
}

void FileChooser::ForgetOdd() {
    odd_selected_.clear();
    const QSignalBlocker quiet(odd_list_);
    odd_list_->setCurrentItem(nullptr);
}

void FileChooser::Enter(const std::string& folder) {
    const QString path = names_.PathOf(folder);
    if (!path.isEmpty()) setDirectory(path);
}

// ---- what is chosen ----

std::string FileChooser::Folder() const {
    return names_.BytesOf(directory().absolutePath());
}

QStringList FileChooser::CurrentPatterns() const {
    return filters_.empty() ? QStringList() : PatternsOf(filters_[SelectedFilter()]);
}

std::size_t FileChooser::SelectedFilter() const {
    const auto* const types = findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
    const int index = types != nullptr ? types->currentIndex() : 0;
    return std::min(static_cast<std::size_t>(std::max(index, 0)),
                    std::max<std::size_t>(filters_.size(), 1) - 1);
}

std::string FileChooser::Named() const {
    const QString text = name_edit_ != nullptr ? name_edit_->text() : QString();
    const bool is_whole = text.startsWith(u'/') || text.startsWith(u'\\');
    if (text.isEmpty() || is_whole) return QFile::encodeName(text).toStdString();
    const bool at_home = text.startsWith(QStringLiteral("~/"));
    const std::string folder =
        at_home ? QFile::encodeName(QDir::homePath()).toStdString() : Folder();
    return folder + '/' + QFile::encodeName(at_home ? text.mid(2) : text).toStdString();
}

std::string FileChooser::Selected() const {
    if (!odd_selected_.empty()) return odd_selected_;
    return current_.empty() || is_typed_ ? Named() : current_;
}

// A name may be typed as on the systems that films come from: other letters, other separators.
// What is saved never takes the place of a file in other letters.
std::optional<std::string> FileChooser::Resolve(const std::string& path) const {
    auto existing = platform::ExistingFileName(path);
    if (existing && (acceptMode() == AcceptOpen || IsFolder(*existing))) return existing;
    if (auto made = platform::NewFileName(path)) return made;
    return folder_must_exist_ ? std::nullopt : std::optional(path);
}

void FileChooser::accept() {
    const std::string path = Selected();
    if (path.empty()) return;
    const auto resolved = Resolve(path);
    if (!resolved) {
        QMessageBox::warning(this, windowTitle(), kNoSuchFolder + ReadableName(FolderOf(path)));
        return;
    }
    if (IsFolder(*resolved)) {
        if (name_edit_ != nullptr) name_edit_->clear();
        Enter(*resolved);
        return;
    }
    Finish(*resolved);
}

void FileChooser::Finish(const std::string& path) {
    const std::string before = std::exchange(odd_selected_, path); // whoever asks meanwhile
    if (may_accept && !may_accept()) {
        odd_selected_ = before;
        return;
    }
    chosen_ = path;
    QDialog::accept();
}

} // namespace kelvo::desktop
