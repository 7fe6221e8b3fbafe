#include "apps/qzanno-composer/TitleTimes.h"

#include <QStringList>
#include <algorithm>
#include <cmath>

namespace qz::composer {
namespace {

// As subtitling guides recommend: about fifteen letters a second, neither too short nor too long.
constexpr double kCharactersPerSecond = 15;
constexpr double kShortestSeconds = 1.5;
constexpr double kLongestSeconds = 7;

}  // namespace

QString clock(double seconds) {
    const auto total = static_cast<qint64>(seconds * 1000 + 0.5);
    return QString("%1:%2:%3.%4")
        .arg(total / 3600000, 2, 10, QChar('0'))
        .arg(total / 60000 % 60, 2, 10, QChar('0'))
        .arg(total / 1000 % 60, 2, 10, QChar('0'))
        .arg(total % 1000, 3, 10, QChar('0'));
}

std::optional<double> secondsOfClock(const QString& text) {
    constexpr double kHoursMax = 1e6;
    QStringList fields = text.trimmed().replace(',', '.').split(':');
    double seconds = 0;
    for (qsizetype i = 0; i < fields.size(); ++i) {
        const bool isLast = i == fields.size() - 1;
        bool isNumber = false;
        const double value = isLast ? fields[i].toDouble(&isNumber) : fields[i].toUInt(&isNumber);
        const bool isDigits =
            std::ranges::all_of(fields[i], [](QChar c) { return c == '.' || (c >= '0' && c <= '9'); });
        if (!isNumber || !isDigits || (i > 0 && value >= 60)) return {};
        seconds = seconds * 60 + value;
    }
    if (fields.size() > 3 || seconds > kHoursMax * 3600) return {};
    return std::round(seconds * 1000) / 1000;
}

void giveTimes(std::vector<Title>& titles, size_t title) {
    Title& given = titles[title];
    const double start = title > 0 ? titles[title - 1].end.value_or(0) : 0;
    double end = start + std::clamp(given.text->length() / kCharactersPerSecond, kShortestSeconds, kLongestSeconds);
    const auto next = title + 1 < titles.size() ? titles[title + 1].start : std::nullopt;
    if (next && *next > start) end = std::min(end, *next);
    given.start = start;
    given.end = std::round(end * 1000) / 1000;
}

}  // namespace qz::composer
