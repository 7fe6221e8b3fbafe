// A program of another project, with the static library in it: reads archives of classes that it does not use itself.
#include <cstdio>

#include <QzAnno/QzAnno.h>

int main() {
    for (const char* name :
         {"NSURL", "NSFont", "NSColor", "QzBBoxInfo", "QzAnnoPalette", "QzAnnoString", "QzAnnoKey"}) {
        if (qz::codedClassNamed(name)) continue;
        std::printf("%s is not known to the unarchivers\n", name);
        return 1;
    }
    return 0;
}
