#include "QzAnno/ui/QzAnnotationManager.h"

#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTableView>

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/ui/NSApplication.h"
#include "QzAnno/platform/ui/NSTextViewWidget.h"
#include "QzAnno/platform/ui/NSUserDefaults.h"
#include "platform/ui/InterfaceFile.h"
#include "platform/ui/NSBox.h"

namespace qz {
namespace {

constexpr const char* kInterfaceFile = ":/QzAnno/QzAnnotationPaletteUI.ui";
// Stored defaults have this spelling, so keep it.
constexpr const char* kVisibleKey = "AnnoationPaletteVisible";
constexpr const char* kBackgroundKey = "App Background Color";

/// Never destroyed: the toolkit must not find it half destroyed at exit.
Ref<QzAnnotationManager>& sharedManager() {
    static auto* shared = new Ref<QzAnnotationManager>;
    return *shared;
}
bool windowIsLoading = false;

/// Text views handle the action anywhere in the responder chain.
const NSTextViewWidget::ActionRegistration changeAnnoOfTextViews("changeAnno:", [](NSTextView& textView,
                                                                                   const Ref<NSObject>& sender) {
    if (const auto* changing = dynamic_cast<const QzAnnoChanging*>(sender.get())) changeAnno(textView, *changing);
});

Ref<MenuContextTableView> paletteTable(QTableView* widget) {
    const Ref<MenuContextTableView> table = MenuContextTableView::tableViewWithWidget(widget);
    const auto state = NSTableColumn::initWithIdentifier("selectionstate"_ns, "On"_ns);
    const Ref<NSButtonCell> check = NSButtonCell::init();
    check->setButtonType(NSButtonType::switchButton);
    check->setAllowsMixedState(true);
    state->setDataCell(check);
    table->addTableColumn(state);
    table->addTableColumn(NSTableColumn::initWithIdentifier("Annotations"_ns, "Annotation"_ns));
    table->addTableColumn(NSTableColumn::initWithIdentifier("Frame"_ns));
    QHeaderView* header = widget->horizontalHeader();
    header->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    header->setSectionResizeMode(1, QHeaderView::Stretch);
    header->setSectionResizeMode(2, QHeaderView::ResizeToContents);
    return table;
}

Ref<NSTableView> pageTable(QTableView* widget) {
    const Ref<NSTableView> table = NSTableView::tableViewWithWidget(widget);
    table->addTableColumn(NSTableColumn::initWithIdentifier("page"_ns, "Page"_ns));
    widget->horizontalHeader()->hide();
    widget->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    widget->setSelectionMode(QAbstractItemView::SingleSelection);
    return table;
}

/// Makes the list of pages as wide as its words, and sets the initial size of the windows by the font, with the editor
/// large enough that no page scrolls.
void giveSizes(const InterfaceFile& file) {
    constexpr int kPanelCharacters = 38, kPanelLines = 22;
    if (QWidget* panel = file.widgetNamed("panel")) {
        const QFontMetrics metrics = panel->fontMetrics();
        panel->resize(metrics.averageCharWidth() * kPanelCharacters, metrics.height() * kPanelLines);
    }
    if (auto* pages = file.widget<QAbstractItemView>("pages"))
        pages->setFixedWidth(pages->sizeHintForColumn(0) + 2 * pages->frameWidth());
    QWidget* editor = file.widgetNamed("editor");
    const auto* area = file.widget<QScrollArea>("pageArea");
    if (!editor || !area || !area->widget()) return;
    // Leave room for the scroll bar that pages have on a low screen.
    const QSize page = area->widget()->sizeHint() + QSize(area->verticalScrollBar()->sizeHint().width(), 0);
    editor->resize(editor->sizeHint() + (page - area->sizeHint()).expandedTo({0, 0}));
}

}  // namespace

Ref<QzAnnotationManager> QzAnnotationManager::init() {
    if (sharedManager()) return sharedManager();
    Ref<QzAnnotationManager> manager(new QzAnnotationManager);
    // Loading may ask for the shared manager.
    sharedManager() = manager;
    manager->loadInterface();
    manager->observeSelections();
    return manager;
}

Ref<QzAnnotationManager> QzAnnotationManager::initWithWindow(const Ref<NSWindow>& window) {
    Ref<QzAnnotationManager> manager(new QzAnnotationManager);
    manager->setWindow(window);
    return manager;
}

QzAnnotationManager::~QzAnnotationManager() {
    NSNotificationCenter::defaultCenter().removeObserver(this);
    if (window() && window()->delegate() == this) window()->setDelegate(nullptr);
    if (ptable_) ptable_->setManager(nullptr);
}

void QzAnnotationManager::loadInterface() {
    const Ref<InterfaceFile> file = InterfaceFile::load(kInterfaceFile);
    if (!file) return;
    ptable_ = QzAnnoPaletteAsTable::init();
    editor_ = QzAnnoEditor::init();
    const std::map<std::string, Ref<NSResponder>> targets = {{"table", ptable_}, {"editor", editor_}};

    QzAnnoPaletteAsTable::Outlets table;
    table.DBGtext = file->widget<QLabel>("paletteLabel");
    table.tableView = paletteTable(file->widget<QTableView>("paletteTable"));
    table.menuForTable = file->menuOfWidget("paletteTable", targets);
    table.annoAsTable = editor_;
    table.delegate = this;
    ptable_->connectOutlets(table);

    QzAnnoEditor::Outlets editor;
    editor.tabview = NSTabView::tabViewWithWidget(file->widget<QStackedWidget>("tabview"));
    editor.paletteHost = ptable_;
    editor.hpopup = NSPopUpButton::popUpButtonWithWidget(file->widget<QComboBox>("hpopup"));
    editor.vpopup = NSPopUpButton::popUpButtonWithWidget(file->widget<QComboBox>("vpopup"));
    editor.annoname = file->widget<QLineEdit>("annoname");
    editor.pages = pageTable(file->widget<QTableView>("pages"));
    // A group of optional attributes has a check box as title.
    for (const char* name : {"nameBox", "marginsBox", "boundingmarginsBox", "frameBox"}) {
        setCellBox(*NSBox::boxWithWidget(file->widget<QGroupBox>(name)), {}, {});
    }
    editor.annowindow = NSPanel::panelWithWidget(file->widgetNamed("editor"));
    editor_->connectOutlets(editor);

    editor.annowindow->setFrameAutosaveName("Annotation Editor");
    setWindow(NSPanel::panelWithWidget(file->widgetNamed("panel")));
    window()->setFrameAutosaveName("Annotations");
    window()->setDelegate(this);
    for (const Ref<NSWindow>& each : {window(), editor.annowindow}) {
        InterfaceFile::connectActions(*each->widget(), targets);
    }
    ptable_->awakeFromNib();
    editor_->awakeFromNib();
    InterfaceFile::bindControls(*window()->widget(), ptable_);
    InterfaceFile::bindControls(*editor.annowindow->widget(), editor_);
    giveSizes(*file);
    awakeFromNib();
}

void QzAnnotationManager::observeSelections() {
    addSelectionChangeNotifier(NSTextViewDidChangeSelectionNotification, {});
}

void QzAnnotationManager::awakeFromNib() {
    if (const auto panel = std::dynamic_pointer_cast<NSPanel>(window())) {
        panel->setBecomesKeyOnlyIfNeeded(true);
        panel->setFloatingPanel(true);
    }
    if (isWindowLoaded() && NSUserDefaults::standardUserDefaults().boolForKey(kVisibleKey)) {
        showWindow(shared_from_this());
    }
}

bool QzAnnotationManager::isWindowLoaded() const {
    return sharedManager().get() == this;
}

void QzAnnotationManager::windowDidLoad() {
    NSWindowController::windowDidLoad();
    if (windowIsLoading) return;
    windowIsLoading = true;
    showWindow(shared_from_this());
    windowIsLoading = false;
}

void QzAnnotationManager::adoptSharedRole() {
    const Ref<QzAnnotationManager> former = sharedAnnotationManager();
    setWindow(former->window());
    former->setWindow({});
    setDocument(former->document());
    former->setDocument({});
    // The panel needs these to work: its table, its editor, and the selections that it follows.
    ptable_ = std::exchange(former->ptable_, nullptr);
    editor_ = std::exchange(former->editor_, nullptr);
    if (ptable_) ptable_->setManager(this);
    if (window()) window()->setDelegate(this);
    observeSelections();
    sharedManager() = std::static_pointer_cast<QzAnnotationManager>(shared_from_this());
}

void QzAnnotationManager::showWindow(const Ref<NSObject>& sender) {
    if (!isWindowLoaded()) adoptSharedRole();
    if (!isWindowLoaded()) {
        reportFailedAssertion("QzAnno_AnnotatedTextFramework/QzAnnotationManager", 92,
                              "*** nonshared AnnotationManager!!!");
        return;
    }
    NSLog("showWindow\n");
    if (!window()) return;
    const Ref<NSColor> background = NSUserDefaults::standardUserDefaults().colorForKey(kBackgroundKey);
    if (background) window()->setBackgroundColor(background);
    NSWindowController::showWindow(sender);
    window()->display();
    saveVisible(window()->isVisible());
}

void QzAnnotationManager::saveVisible(bool isVisible) const {
    if (isWindowLoaded()) NSUserDefaults::standardUserDefaults().setBool(isVisible, kVisibleKey);
}

bool QzAnnotationManager::cancelOperation(NSWindow& /*window*/) {
    QWidget* main = NSApplication::sharedApplication().mainWindow();
    if (main) main->activateWindow();
    return main != nullptr;
}

void QzAnnotationManager::windowWillClose(const NSNotification& /*notification*/) {
    saveVisible(false);
}

Ref<NSUndoManager> QzAnnotationManager::windowWillReturnUndoManager(NSWindow& /*window*/) {
    const Ref<QzAnnoPalette> palette = ptable_ ? ptable_->palette() : nullptr;
    return palette ? palette->undoManager() : nullptr;
}

// Palette and responder

bool QzAnnotationManager::setAnnotationPalette(const Ref<QzAnnoPalette>& palette) {
    if (!ptable_) return false;
    if (ptable_->palette() == palette) return true;
    if (!explicitResponder_.expired()) return false;
    ptable_->setAnnotationPalette(palette);
    return true;
}

bool QzAnnotationManager::setResponder(const Ref<NSObject>& responder, const Ref<QzAnnoPalette>& paletteMatch) {
    if (!responder || !ptable_ || ptable_->palette() != paletteMatch || !isAnnoUsing(*responder)) return false;
    explicitResponder_ = responder;
    return true;
}

bool QzAnnotationManager::clearResponder(const Ref<NSObject>& responder) {
    if (!responder || explicitResponder_.lock() != responder) return false;
    explicitResponder_.reset();
    return true;
}

void QzAnnotationManager::sendChangeAnno(const Ref<QzAnnoPaletteAsTable>& sender) {
    if (const Ref<NSObject> responder = explicitResponder_.lock()) {
        qz::sendChangeAnno(*responder, *sender);
        return;
    }
    NSApplication::sharedApplication().sendAction("changeAnno:", {}, sender);
}

// Selections

void QzAnnotationManager::annotationChangeSelectionUpdate(const NSNotification& notification) {
    if (ptable_) ptable_->annotationChangeSelectionUpdate(notification);
}

void QzAnnotationManager::addSelectionChangeNotifier(const Ref<NSString>& name, const Ref<NSObject>& object) {
    NSNotificationCenter::defaultCenter().addObserver(
        this, [this](const NSNotification& notification) { annotationChangeSelectionUpdate(notification); }, name,
        object.get());
}

void QzAnnotationManager::removeSelectionChangeNotifier(const Ref<NSString>& name, const Ref<NSObject>& object) {
    NSNotificationCenter::defaultCenter().removeObserver(this, name, object.get());
}

}  // namespace qz
