// A desktop program of another project: shows a palette in the annotation panel, and a text view in its own window.
#include <QApplication>
#include <QWidget>
#include <cstdio>

#include <QzAnno/QzAnno.h>
#include <QzAnno/QzAnnoUI.h>

using namespace qz::literals;

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    qz::NSUserDefaults::standardUserDefaults().useFile(argv[1]);
    const QApplication application(argc, argv);
    const auto palette = qz::QzAnnoPalette::init();
    palette->setUndoManager(qz::NSUndoManager::init());
    palette->createAnno("Lower Third"_ns);
    const auto manager = qz::QzAnnotationManager::sharedAnnotationManager();
    manager->setAnnotationPalette(palette);
    manager->showWindow({});
    QWidget window;
    const auto view = qz::NSTextView::init();
    const auto text = qz::NSTextViewWidget::initWithTextView(view, &window);
    view->insertText("Hello"_ns);
    const bool shows = manager->window() && manager->window()->isVisible() && text->widget()->parentWidget() == &window;
    std::printf("%s\n", shows ? "panel and text view" : "no panel");
    return shows ? 0 : 1;
}
