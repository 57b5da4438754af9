#pragma once

#include <QString>
#include <QStringList>

namespace velk::core {

/// A path taken apart: what it begins with, and its names. Purely text; no
/// file is looked at.
///
/// `/` and `\` both separate, several count as one, and one at the end for
/// nothing. Where a path from the root on is the system's own form, only `/`
/// separates in such a path. The prefix `\\?\` is taken off.
struct PathParts {
    QString drive;        ///< one letter, without a colon
    QString computer;     ///< of a path that begins with two separators
    QString share;        ///< only beside a computer
    bool rooted = false;  ///< begins at the root of the drive, or of the system
    QStringList names;

    static PathParts parse(QString const& text);

    /// The whole path with one kind of separator.
    QString text(QChar separator) const;
    /// With `/`.
    QString standard() const { return text('/'); }
    /// As the system that the path is for writes it: with `\` when there is a
    /// drive or a computer.
    QString native() const;

    bool isNull() const { return !hasOrigin() && !rooted && names.isEmpty(); }
    /// Whether there is a drive or a computer.
    bool hasOrigin() const { return !drive.isEmpty() || !computer.isEmpty(); }
    bool isAbsolute() const;
    /// Whether this is a root: nothing may be above it.
    bool isRoot() const { return names.isEmpty() && (rooted || hasOrigin()); }

    /// The last name, empty without one.
    QString name() const { return names.isEmpty() ? QString() : names.last(); }
    /// What follows the last point of the name, unless the point begins it.
    QString extension() const;
    /// Without the last name.
    PathParts folder() const;
    /// The origin and the root alone.
    PathParts root() const;

    /// Without `.`, and without `..` where a name stands before it or a root
    /// ends the way up.
    PathParts cleaned() const;
    /// This path, and `other` below it. An absolute `other` takes its place; one
    /// that begins at a root keeps this one's drive or share.
    PathParts joined(PathParts const& other) const;
    /// How many of the names are left when `leading`, of the same origin, is
    /// taken off the front; -1 when this does not begin with it. Case counts
    /// in the system's own paths only where it does for the system.
    int namesBelow(PathParts const& leading) const;
};

}  // namespace velk::core
