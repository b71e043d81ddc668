#include "platform/desktop/MessageBoxes.h"

#include "platform/base/events.h"
#include "platform/base/handles.h"
#include "platform/desktop/Desktop.h"
#include "platform/desktop/UiLoop.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowViews.h"

#include <QMessageBox>
#include <QPushButton>
#include <QWindow>

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

namespace kelvo::desktop {

namespace {

const QString kYes = QStringLiteral("Sì");
const QString kNo = QStringLiteral("No");
const QString kOk = QStringLiteral("OK");

QMessageBox::Icon IconFor(UINT type) {
    switch (type & MB_ICONMASK) {
    case MB_ICONHAND:
        return QMessageBox::Critical;
    case MB_ICONQUESTION:
        return QMessageBox::Question;
    case MB_ICONEXCLAMATION:
        return QMessageBox::Warning;
    default:
        return QMessageBox::NoIcon;
    }
}

/// An owner alone is inert meanwhile; without one, or task-modal, all windows are.
void MakeModal(QMessageBox& box, const platform::MessageBoxRequest& request) {
    box.setWindowModality(Qt::ApplicationModal);
    box.setWindowFlag(Qt::WindowStaysOnTopHint, (request.type & MB_TOPMOST) != 0);
    const FrameWidget* owner = FrameOf(request.owner);
    if (owner == nullptr || owner->windowHandle() == nullptr) return;
    if ((request.type & MB_TASKMODAL) == 0) box.setWindowModality(Qt::WindowModal);
    // No child of the owner: that may be destroyed while the box is open.
    box.winId();
    box.windowHandle()->setTransientParent(owner->windowHandle());
}

void SetUp(QMessageBox& box, const platform::MessageBoxRequest& request) {
    box.setIcon(IconFor(request.type));
    box.setWindowTitle(QString::fromStdString(request.caption));
    box.setTextFormat(Qt::PlainText); // a file's name is no markup
    box.setText(QString::fromStdString(request.text));
    if ((request.type & MB_TYPEMASK) == MB_YESNO) {
        box.addButton(kYes, QMessageBox::YesRole);
        box.setEscapeButton(box.addButton(kNo, QMessageBox::NoRole));
    } else {
        box.addButton(kOk, QMessageBox::AcceptRole);
    }
    MakeModal(box, request);
}

int AnswerOf(const QMessageBox& box, UINT type) {
    QAbstractButton* const pressed = box.clickedButton();
    const bool yes = pressed != nullptr && box.buttonRole(pressed) == QMessageBox::YesRole;
    return yes ? IDYES : platform::SafeAnswer(type);
}

int ShowOnUiThread(const platform::MessageBoxRequest& request) {
    QMessageBox box;
    SetUp(box, request);
    box.exec();
    return AnswerOf(box, request.type);
}

/// What a thread waits for. It keeps the object alive, and so does the open box.
class ThreadsBox {
public:
    explicit ThreadsBox(platform::MessageBoxRequest request)
        : request_(std::move(request)), answered_(::CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}
    ThreadsBox(const ThreadsBox&) = delete;
    ThreadsBox& operator=(const ThreadsBox&) = delete;
    ~ThreadsBox() {
        if (answered_ != nullptr) ::CloseHandle(answered_);
    }

    const platform::MessageBoxRequest& Request() const { return request_; }
    void Answer(int answer) {
        answer_ = answer;
        ::SetEvent(answered_);
    }
    int Wait() const {
        ::WaitForSingleObject(answered_, INFINITE);
        return answer_;
    }
    bool IsAnswered() const { return answer_ != 0; }

private:
    const platform::MessageBoxRequest request_;
    const HANDLE answered_;
    std::atomic<int> answer_ = 0; // UI thread writes, the asking thread reads
};

struct OpenBox {
    std::shared_ptr<ThreadsBox> asked;
    QMessageBox* box = nullptr; ///< deletes itself once it has been closed
};

std::vector<OpenBox>& OpenBoxes() {
    static auto* const boxes = new std::vector<OpenBox>; // UI thread only; outlives main
    return *boxes;
}

void CloseBox(const std::shared_ptr<ThreadsBox>& asked, int answer) {
    const auto found = std::ranges::find(OpenBoxes(), asked, &OpenBox::asked);
    if (found == OpenBoxes().end()) return;
    QMessageBox* const box = found->box;
    OpenBoxes().erase(found);
    asked->Answer(answer);
    box->disconnect();
    box->hide();
    box->deleteLater();
}

void Open(const std::shared_ptr<ThreadsBox>& asked) {
    auto* const box = new QMessageBox;
    SetUp(*box, asked->Request());
    OpenBoxes().push_back({asked, box});
    QObject::connect(box, &QDialog::finished, box,
                     [asked, box] { CloseBox(asked, AnswerOf(*box, asked->Request().type)); });
    box->show();
}

int AskFromOtherThread(const platform::MessageBoxRequest& request) {
    /// Takes the question back when the thread is ended while it waits.
    struct Question {
        std::shared_ptr<ThreadsBox> box;
        ~Question() {
            if (box->IsAnswered()) return;
            const auto queue = UiQueue();
            if (queue) queue->Defer([box = box] { CloseBox(box, IDCANCEL); });
        }
    };
    const Question question{std::make_shared<ThreadsBox>(request)};
    const auto open = [box = question.box]() -> LRESULT {
        Open(box);
        return TRUE;
    };
    return RunOnUiThread(open) == 0 ? 0 : question.box->Wait();
}

} // namespace

int ShowMessageBox(const platform::MessageBoxRequest& request) {
    if (!platform::HasDisplay() && !platform::PlatformChosenByUser()) {
        return platform::ShowBoxOnConsole(request);
    }
    return OnUiThread() ? ShowOnUiThread(request) : AskFromOtherThread(request);
}

bool IsThreadsBoxOpen() {
    return !OpenBoxes().empty();
}

void CloseThreadsBoxes() {
    while (IsThreadsBoxOpen()) {
        const auto asked = OpenBoxes().front().asked;
        CloseBox(asked, platform::SafeAnswer(asked->Request().type));
    }
}

} // namespace kelvo::desktop
