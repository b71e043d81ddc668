#pragma once
// The toolkit's file dialog as the program needs it: Italian, without a question before overwriting
// (the program asks itself), and also for names that the toolkit cannot spell. UI thread only.

#include "platform/desktop/dialogs/FolderNames.h"

#include <QFileDialog>
#include <QListWidget>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::desktop {

struct FileFilter {
    std::string description;
    std::string patterns; ///< parted by ";"
};

/// Reads pairs of texts, each closed by a zero byte, up to an empty description.
std::vector<FileFilter> ParseFilters(const char* filters);

class FileChooser final : public QFileDialog {
public:
    struct Settings {
        AcceptMode mode = AcceptOpen;
        QString title; ///< empty: the usual one
        std::vector<FileFilter> filters;
        std::size_t filter = 0; ///< which of them is chosen at first
        std::string folder;     ///< empty or missing: the working folder
        std::string file_name;  ///< with or without a folder
        bool folder_must_exist = false;
    };

    explicit FileChooser(const Settings& settings);

    /// What is selected or typed; empty when nothing is.
    std::string Selected() const;
    /// What was chosen; only once the dialog was accepted.
    const std::string& Chosen() const { return chosen_; }
    /// Counted from 0.
    std::size_t SelectedFilter() const;

    /// The person has turned to another file or folder.
    std::function<void()> on_selected;
    std::function<void()> on_folder_entered;
    /// A name was chosen. @return whether the dialog shall end with it
    std::function<bool()> may_accept;

protected:
    void accept() override;

private:
    void LetTypedNamesPass() const;
    void SetUpTexts(const Settings& settings);
    void SetUpFilters(const std::vector<FileFilter>& filters, std::size_t selected);
    void StartAt(const Settings& settings);
    void TakeSelection();
    void AddOddList();
    void RefreshOddList();
    void SelectOdd(const QListWidgetItem* item);
    void OpenOdd(const QListWidgetItem& item);
    void ForgetOdd();
    void Enter(const std::string& folder);
    std::string Folder() const;
    QStringList CurrentPatterns() const;
    std::string Named() const;
    std::optional<std::string> Resolve(const std::string& path) const;
    void Finish(const std::string& path);

    FolderNames names_;
    std::vector<FileFilter> filters_;
    QListWidget* odd_list_ = nullptr; ///< files whose names the toolkit cannot spell
    QLineEdit* name_edit_ = nullptr;
    std::string current_;      ///< what is selected in the toolkit's list
    std::string odd_selected_; ///< what is selected in odd_list_
    std::string chosen_;
    bool is_typed_ = false; ///< the name that stands there counts, not the list
    bool folder_must_exist_;
};

} // namespace kelvo::desktop
