#include "path_name.h"

#include "host/dispatch_client.h"

#include "path_system.h"

namespace velk::core {

namespace {

constexpr char const* nameSeparators = "/\\";

bool holdsSeparator(QString const& text) {
    return text.contains(nameSeparators[0]) || text.contains(nameSeparators[1]);
}

PathParts comparable(PathParts const& path) {
    return absoluteOf(path).cleaned();
}

}  // namespace

mzComPtrT<mzIUnknown> newPathName(PathParts parts) {
    return (new PathName(std::move(parts)))->getIUnknown();
}

PathParts pathOfText(mzComStringC const& text, char const* operation) {
    if (text.toQString().contains(QChar('\0'))) {
        proxyObjectC::throwExecuteException("A path cannot contain the character 0", operation, 1);
    }
    return PathParts::parse(text);
}

PathParts pathArgument(mzComVariantC const& path, char const* operation) {
    mzComVariantC value = path.skipVariable();
    if (value.getType() == mzTypeObject) {
        mzComVariantC standard;
        if (value.toDispatch().getProperty("standard", standard) != mzSuccess) {
            proxyObjectC::throwExecuteException("The object is no path", operation, 1);
        }
        value = standard.skipVariable();
    }
    mzComStringC text;
    if (value.getType() == mzTypeEmpty || value.getExt(text) != mzSuccess) {
        proxyObjectC::throwExecuteException("The value is no path", operation, 1);
    }
    return pathOfText(text, operation);
}

void PathName::setNative(mzComStringC const& path) {
    parts_ = pathOfText(path, "native");
}

void PathName::setDrive(mzComStringC const& given) {
    QString letter = given;
    if (letter.endsWith(':')) letter.chop(1);
    PathParts const drive = PathParts::parse(letter + ":");
    if (!letter.isEmpty() && drive.drive != letter) {
        throwExecuteException("A drive is a single letter", "Drive", 1);
    }
    parts_.drive = letter;
    parts_.computer.clear();
    parts_.share.clear();
}

void PathName::setExtension(mzComStringC const& given) {
    QString extension = given;
    if (parts_.names.isEmpty()) throwExecuteException("The path has no name", "Ext", 1);
    if (holdsSeparator(extension) || extension.contains(QChar('\0'))) {
        throwExecuteException("An extension is part of a single name", "Ext", 1);
    }
    if (extension.startsWith('.')) extension.remove(0, 1);
    QString& name = parts_.names.last();
    if (int const size = parts_.extension().size()) name.chop(size + 1);
    if (!extension.isEmpty()) name += "." + extension;
}

void PathName::append(mzComVariantC const& path) {
    parts_ = parts_.joined(pathArgument(path, "append"));
}

mzComPtrT<mzIUnknown> PathName::plus(mzComVariantC const& path) {
    return newPathName(parts_.joined(pathArgument(path, "plus")));
}

mzComPtrT<mzIUnknown> PathName::minus(mzComVariantC const& leading) {
    PathParts const start = pathArgument(leading, "minus").cleaned();
    PathParts const path = parts_.cleaned();
    int const below = path.namesBelow(start);
    if (below < 0) {
        throwExecuteException(
            "'" + standard() + "' does not begin with '" + mzComStringC(start.standard()) + "'",
            "minus", 1);
    }
    PathParts rest;
    rest.names = path.names.mid(path.names.size() - below);
    return newPathName(std::move(rest));
}

bool PathName::isEqual(mzComVariantC const& path) {
    return comparable(parts_).namesBelow(comparable(pathArgument(path, "isEqual"))) == 0;
}

bool PathName::isSubDirectoryOf(mzComVariantC const& path) {
    return comparable(parts_).namesBelow(comparable(pathArgument(path, "isSubDirOf"))) > 0;
}

mzComStringC PathName::absoluteFilePath() {
    return absoluteOf(parts_).standard();
}

mzComStringC PathName::canonicalFilePath() {
    auto const canonical = exists() != 0 ? canonicalOf(parts_) : std::nullopt;
    return canonical ? canonical->standard() : QString();
}

mzComStringC PathName::canonicalPath() {
    auto const canonical = exists() != 0 ? canonicalOf(parts_) : std::nullopt;
    return canonical ? canonical->folder().standard() : QString();
}

void PathName::resolve() {
    parts_ = canonicalOf(parts_).value_or(absoluteOf(parts_));
}

mzComPtrT<mzIUnknown> PathName::resolved() {
    return newPathName(canonicalOf(parts_).value_or(absoluteOf(parts_)));
}

mzComPtrT<mzIUnknown> PathName::localPathFromUncPath() {
    return newPathName(hasComputerName() ? localPathOf(parts_) : parts_);
}

}  // namespace velk::core
