#pragma once

#include "host/proxy_object.h"

#include "path_parts.h"

namespace velk::core {

/// The script object "qxttools.pathname": a path, its parts, and the file or
/// folder that it names. It keeps the path alone: every question about files
/// looks at them anew.
///
/// Texts are given with `/`, but for `native`. A path as an argument is a text,
/// or another object with a property "standard". What changes files is 1 when
/// done and fails otherwise, as does a path that cannot be read. Paths on a
/// drive or a share that the system does not know name nothing that exists.
class PathName : public proxyObjectC {
  public:
    PathName() = default;
    explicit PathName(PathParts parts) : parts_(std::move(parts)) {}

    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }
    static proxyMemberDescListS const* getStaticProxyTypeInfo();

    // The text of the path.

    /// The whole path: with `/`, and as its system writes it.
    mzComStringC standard() { return parts_.standard(); }
    mzComStringC native() { return parts_.native(); }
    void setNative(mzComStringC const& path);
    /// The letter alone. It is put as `C` or `C:`, and takes the place of a
    /// computer and share; the empty text takes the drive away.
    mzComStringC drive() { return parts_.drive; }
    void setDrive(mzComStringC const& drive);
    mzComStringC computerName() { return parts_.computer; }
    mzComStringC shareName() { return parts_.share; }
    /// The path without its last name.
    mzComStringC folder() { return parts_.folder().standard(); }
    /// The last name, with its extension.
    mzComStringC name() { return parts_.name(); }
    /// What follows the last point of the name; a point that begins the name
    /// counts for none. It is put with or without the point; the empty text
    /// takes it away. Fails for a path without a name.
    mzComStringC extension() { return parts_.extension(); }
    void setExtension(mzComStringC const& extension);
    bool hasDrive() { return !parts_.drive.isEmpty(); }
    bool hasComputerName() { return !parts_.computer.isEmpty(); }
    bool hasShareName() { return !parts_.share.isEmpty(); }
    bool hasExtension() { return !parts_.extension().isEmpty(); }
    /// Whether the path is a drive, a computer, or a share and nothing more.
    bool isDrive() { return hasDrive() && parts_.names.isEmpty(); }
    bool isComputerName() { return hasComputerName() && !hasShareName(); }
    bool isShareName() { return hasShareName() && parts_.names.isEmpty(); }
    bool isAbsolute() { return parts_.isAbsolute(); }
    /// Whether the path is empty.
    bool isNull() { return parts_.isNull(); }

    /// Goes on with a path below this one; an absolute one takes its place.
    void append(mzComVariantC const& path);
    /// The same as a new object.
    mzComPtrT<mzIUnknown> plus(mzComVariantC const& path);
    /// A new object: what is left without the leading path. Fails when this
    /// path does not begin with it.
    mzComPtrT<mzIUnknown> minus(mzComVariantC const& leading);
    /// Takes out `.`, and `..` with the name before it.
    void optimize() { parts_ = parts_.cleaned(); }
    /// Whether both are the same once absolute and without `.` and `..`. Case
    /// counts in Linux's own paths only.
    bool isEqual(mzComVariantC const& path);
    /// Whether this path lies below the other one.
    bool isSubDirectoryOf(mzComVariantC const& path);

    // What the path names.

    /// 1 or 0.
    int exists();
    /// The same of a path below this one.
    int existsBelow(mzComVariantC const& path);
    bool isDirectory();
    bool isFile();
    bool isEmptyDirectory();
    bool isEmptyFile();
    bool isReadable();
    bool isWritable();
    bool isHidden();
    /// Bytes. Fails for what is no file.
    mzComVariantC fileSize();
    mzComStringC absoluteFilePath();
    /// Absolute and without links; empty when it does not exist.
    mzComStringC canonicalFilePath();
    /// The folder of that.
    mzComStringC canonicalPath();
    /// Makes the path absolute, without links as far as it exists.
    void resolve();
    mzComPtrT<mzIUnknown> resolved();
    /// A new object: the path on this machine of what a share names; this path
    /// when it has no computer; an empty one when that is another machine.
    mzComPtrT<mzIUnknown> localPathFromUncPath();
    /// Without effect, as nothing is kept that could be out of date.
    void refresh() {}

    // What changes files.

    /// Makes the folder and those above it; one that exists is left alone.
    int createDirectory();
    /// Makes an empty file; one that exists is left alone.
    int createFile();
    /// A new object: an empty folder, or file, with a new name in this folder,
    /// or in the system's for temporary files when the path is empty.
    mzComPtrT<mzIUnknown> createTempDirectory(mzComStringC const& prefix);
    mzComPtrT<mzIUnknown> createTempFile(mzComStringC const& prefix, mzComStringC const& extension);
    /// Gives the file or folder another path, which this object then has. A
    /// relative one starts in the same folder. Fails when that one exists.
    int renameTo(mzComVariantC const& path);
    /// Permits writing, or forbids it to everybody.
    int setWritable(bool writable);
    /// Removes the file, the link, or the empty folder.
    int unlink();
    /// Removes all that is in the folder: with folders, or files alone. Links
    /// are removed, never followed. A root is never emptied.
    int unlinkContents();
    int unlinkFiles();
    /// Removes the folder with all that is in it, or the file.
    int unlinkRecursive();

  private:
    PathParts parts_;
};

/// A new "qxttools.pathname".
mzComPtrT<mzIUnknown> newPathName(PathParts parts);

/// A path that a script gave as `operation`'s argument; fails when it is none.
PathParts pathArgument(mzComVariantC const& path, char const* operation);
/// The same of a text.
PathParts pathOfText(mzComStringC const& text, char const* operation);

}  // namespace velk::core
