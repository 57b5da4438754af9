/// The characters and words of a registry script.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include "com/registration/script.h"

namespace velk::com {

/// A place in a script, both counted from 1; a column is one character.
struct ScriptPosition {
    unsigned line = 1;
    unsigned column = 1;
};

/// Throws the Error for a mistake in a script: "line:column: `problem`".
[[noreturn]] void throwScriptError(ScriptPosition position, std::string const& problem);

/// Gives a script's characters one by one, with replacements put in. The
/// position of a replacement's characters is that of its "%".
class ScriptCharacters {
  public:
    /// `text` and `replacements` must outlive the reader.
    ScriptCharacters(TextView text, std::span<Replacement const> replacements);

    bool atEnd() const noexcept { return !current_; }
    /// The next character; not to be asked at the end.
    OLECHAR peek() const noexcept { return *current_; }
    ScriptPosition position() const noexcept { return currentPosition_; }

    /// Goes on to the next character. Throws Error for a "%" that begins no
    /// replacement, and for NUL.
    void advance();

    /// Whether a comment begins at the next character, in the script itself.
    bool atComment() const noexcept;
    /// Goes on to the end of the line without reading anything in it.
    void skipLine();

  private:
    void fetch();
    void startReplacement();
    OLECHAR takeRaw();

    TextView text_;
    std::span<Replacement const> replacements_;
    std::size_t next_ = 0;         // first character of text_ not taken yet
    ScriptPosition nextPosition_;  // its position
    TextView pending_;             // rest of the replacement being read
    ScriptPosition pendingPosition_;
    std::optional<OLECHAR> current_;
    bool currentIsReplaced_ = false;
    ScriptPosition currentPosition_;
};

enum class ScriptTokenKind { word, quoted, open, close, equals, end };

struct ScriptToken {
    ScriptTokenKind kind = ScriptTokenKind::end;
    std::basic_string<OLECHAR> text;
    ScriptPosition position;
};

/// Gives a script's words one by one.
class ScriptWords {
  public:
    ScriptWords(TextView text, std::span<Replacement const> replacements)
        : characters_(text, replacements) {}

    /// The next word; `end` again and again at the end. Throws Error for
    /// quotes that do not close or are not followed by a blank.
    ScriptToken next();

  private:
    void skipBlanks();
    void readQuoted(ScriptToken& token);
    void readWord(ScriptToken& token);

    ScriptCharacters characters_;
};

}  // namespace velk::com
