#include "path_parts.h"

#include <algorithm>

#include "path_system.h"

namespace velk::core {

namespace {

bool isLetter(QChar c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

QStringList split(QString text, bool backslashSeparates) {
    if (backslashSeparates) text.replace('\\', '/');
    return text.split('/', Qt::SkipEmptyParts);
}

bool beginsWithComputer(QString const& text) {
    return text.size() > 2 && text[0] == '/' && text[1] == '/' && text[2] != '/';
}

/// Takes off what makes the system read a path as it stands.
QString withoutLongPrefix(QString const& text) {
    if (!text.startsWith("\\\\?\\")) return text;
    QString const rest = text.mid(4);
    bool const share = rest.startsWith("UNC\\", Qt::CaseInsensitive);
    return share ? "\\\\" + rest.mid(4) : rest;
}

/// Where an extension begins: after the returned point, -1 without one.
int extensionPoint(QString const& name) {
    int const point = name.lastIndexOf('.');
    return point > 0 && name != ".." ? point : -1;
}

}  // namespace

PathParts PathParts::parse(QString const& given) {
    PathParts parts;
    QString const text = withoutLongPrefix(given);
    if (text.size() >= 2 && isLetter(text[0]) && text[1] == ':') {
        parts.drive = text.left(1);
        parts.names = split(text.mid(2), true);
        parts.rooted = text.size() > 2 && (text[2] == '/' || text[2] == '\\');
        return parts;
    }
    QString const slashes = QString(text).replace('\\', '/');
    if (beginsWithComputer(slashes)) {
        parts.names = split(slashes, false);
        parts.computer = parts.names.takeFirst();
        if (!parts.names.isEmpty()) parts.share = parts.names.takeFirst();
        parts.rooted = true;
        return parts;
    }
    parts.rooted = slashes.startsWith('/');
    parts.names = split(text, !(rootIsAbsolute() && text.startsWith('/')));
    return parts;
}

QString PathParts::text(QChar separator) const {
    QString start;
    if (!computer.isEmpty()) {
        start = QString(2, separator) + computer;
        if (!share.isEmpty()) start += separator + share;
        if (!names.isEmpty()) start += separator;
    } else {
        if (!drive.isEmpty()) start = drive + ':';
        if (rooted) start += separator;
    }
    return start + names.join(separator);
}

QString PathParts::native() const {
    return text(hasOrigin() || !rootIsAbsolute() ? '\\' : '/');
}

bool PathParts::isAbsolute() const {
    return rooted && (hasOrigin() || rootIsAbsolute());
}

QString PathParts::extension() const {
    int const point = extensionPoint(name());
    return point < 0 ? QString() : name().mid(point + 1);
}

PathParts PathParts::folder() const {
    PathParts above = *this;
    if (!above.names.isEmpty()) above.names.removeLast();
    return above;
}

PathParts PathParts::root() const {
    PathParts alone = *this;
    alone.names.clear();
    return alone;
}

PathParts PathParts::cleaned() const {
    PathParts clean = root();
    for (QString const& name : names) {
        bool const up = name == "..";
        if (up && !clean.names.isEmpty() && clean.names.last() != "..") {
            clean.names.removeLast();
        } else if (name != "." && !(up && rooted)) {
            clean.names.append(name);
        }
    }
    // What leads to where it starts is not the same as no path at all.
    if (clean.isNull() && !isNull()) clean.names.append(".");
    return clean;
}

PathParts PathParts::joined(PathParts const& other) const {
    bool const sameDrive = !other.drive.isEmpty() && other.computer.isEmpty() && !other.rooted &&
                           drive.compare(other.drive, Qt::CaseInsensitive) == 0;
    if (isNull() || other.isAbsolute() || (other.hasOrigin() && !sameDrive)) return other;
    PathParts result = *this;
    if (other.rooted) {
        result.names.clear();
        result.rooted = true;
    }
    result.names.append(other.names);
    return result;
}

int PathParts::namesBelow(PathParts const& leading) const {
    Qt::CaseSensitivity const letters =
        hasOrigin() || !rootIsAbsolute() ? Qt::CaseInsensitive : Qt::CaseSensitive;
    auto const same = [&](QString const& left, QString const& right) {
        return left.compare(right, letters) == 0;
    };
    bool const begins = rooted == leading.rooted && same(drive, leading.drive) &&
                        same(computer, leading.computer) && same(share, leading.share) &&
                        names.size() >= leading.names.size() &&
                        std::equal(leading.names.begin(), leading.names.end(), names.begin(), same);
    return begins ? names.size() - leading.names.size() : -1;
}

}  // namespace velk::core
