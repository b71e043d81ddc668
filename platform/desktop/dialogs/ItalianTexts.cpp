#include "platform/desktop/dialogs/ItalianTexts.h"

#include <QCoreApplication>
#include <QTranslator>

#include <algorithm>
#include <string_view>

namespace kelvo::desktop {

namespace {

struct ToolkitText {
    std::string_view source;
    const char* italian;
};

// Whatever part of the toolkit says it. What is missing here is shown in English.
constexpr ToolkitText kTexts[] = {
    {"&Delete", "&Elimina"},
    {"&Font", "&Tipo di carattere"},
    {"&New Folder", "&Nuova cartella"},
    {"&No", "&No"},
    {"&OK", "&OK"},
    {"&Open", "&Apri"},
    {"&Rename", "&Rinomina"},
    {"&Save", "&Salva"},
    {"&Size", "&Dimensione"},
    {"&Underline", "&Sottolineato"},
    {"&Yes", "&Sì"},
    {"All Files (*)", "Tutti i file (*)"},
    {"Back", "Indietro"},
    {"Cancel", "Annulla"},
    {"Computer", "Computer"},
    {"Could not delete directory.", "Impossibile eliminare la cartella."},
    {"Create New Folder", "Crea una nuova cartella"},
    {"Create a New Folder", "Crea una nuova cartella"},
    {"Date Modified", "Data di modifica"},
    {"Delete", "Elimina"},
    {"Detail View", "Vista dettagli"},
    {"Effects", "Effetti"},
    {"File", "File"},
    {"Folder", "Cartella"},
    {"Font st&yle", "St&ile"},
    {"Forward", "Avanti"},
    {"Go back", "Torna indietro"},
    {"Go forward", "Vai avanti"},
    {"Go to the parent directory", "Vai alla cartella superiore"},
    {"Kind", "Tipo"},
    {"List View", "Vista elenco"},
    {"My Computer", "Computer"},
    {"Name", "Nome"},
    {"New Folder", "Nuova cartella"},
    {"OK", "OK"},
    {"Open", "Apri"},
    {"Parent Directory", "Cartella superiore"},
    {"Recent Places", "Posizioni recenti"},
    {"Remove", "Rimuovi"},
    {"Sample", "Esempio"},
    {"Save", "Salva"},
    {"Select Font", "Scelta del tipo di carattere"},
    {"Show", "Mostra"},
    {"Show &hidden files", "Mostra i file &nascosti"},
    {"Sidebar", "Barra laterale"},
    {"Size", "Dimensione"},
    {"Stri&keout", "&Barrato"},
    {"Type", "Tipo"},
    {"Wr&iting System", "&Scrittura"},
    {"Files", "File"},
    {"Any", "Qualsiasi"},
};

class ItalianTranslator final : public QTranslator {
public:
    using QTranslator::QTranslator;

    QString translate(const char* /*context*/, const char* source, const char* /*disambiguation*/,
                      int /*count*/) const override {
        const auto found =
            std::ranges::find(kTexts, std::string_view(source), &ToolkitText::source);
        return found == std::end(kTexts) ? QString() : QString::fromUtf8(found->italian);
    }
    bool isEmpty() const override { return false; }
};

} // namespace

void SpeakItalian() {
    QCoreApplication* const application = QCoreApplication::instance();
    if (application->findChild<QTranslator*>(QStringLiteral("ItalianTexts")) != nullptr) return;
    auto* const translator = new ItalianTranslator(application);
    translator->setObjectName(QStringLiteral("ItalianTexts"));
    QCoreApplication::installTranslator(translator);
}

} // namespace kelvo::desktop
