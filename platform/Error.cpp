#include "platform/Error.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>

#include "platform/Bundle.h"
#include "platform/values/Text.h"

namespace quennel {

namespace {

using Kind = Error::Kind;

/// Marks a text that is looked up later, for the tools that compare the code with the catalogues.
constexpr const char* textKey(const char* key) { return key; }

/// The sentence about a kind of failure. The first "%@" stands for the item, the second one for the
/// reason.
struct Sentence {
  Kind kind;
  const char* key;
};

constexpr std::array sentences{
    Sentence{Kind::Unknown, textKey("The system refused: %@.")},
    Sentence{Kind::Reading, textKey("“%@” could not be read: %@.")},
    Sentence{Kind::Creating, textKey("“%@” could not be made: %@.")},
    Sentence{Kind::Writing, textKey("“%@” could not be written: %@.")},
    Sentence{Kind::Removing, textKey("“%@” could not be removed: %@.")},
    Sentence{Kind::ChangingAttributes,
             textKey("The permissions or dates of “%@” could not be set: %@.")},
    Sentence{Kind::CopyingSpecialFile,
             textKey("“%@” is neither a file nor a folder and cannot be copied.")},
    Sentence{Kind::CopyingIntoItself, textKey("A folder cannot be copied into itself, to “%@”.")},
    Sentence{Kind::ChangingUngranted,
             textKey("“%@” lies in no folder that you have given access to.")},
    Sentence{Kind::Remembering, textKey("The access to “%@” cannot be remembered: %@.")},
    Sentence{Kind::NoKeyOfGrants, textKey("“%@” should be the key of your grants and is none.")},
    Sentence{Kind::KeyOfAnotherUser,
             textKey("“%@”, the key of your grants, belongs to another user.")},
    Sentence{Kind::KeyOpenToOthers, textKey("“%@”, the key of your grants, can be read or changed "
                                            "by other users (chmod 600 ends that).")},
    Sentence{Kind::UnreadableSettings,
             textKey("“%@” is not a property list that can be read. It was left as it is: repair "
                     "it or move it away.")},
    Sentence{Kind::StoringSetting, textKey("The settings cannot hold the value of “%@”.")},
    Sentence{Kind::NoKeyCombination, textKey("This is not a key combination.")},
    Sentence{Kind::CombinationInUseHere,
             textKey("Another key of this program has this combination.")},
    Sentence{Kind::CombinationInUse, textKey("Another program has this key combination.")},
    Sentence{Kind::CombinationRefused,
             textKey("The desktop has withdrawn the key, or was not allowed to give it.")},
    Sentence{Kind::UnknownKey, textKey("No key of this keyboard is called so.")},
    Sentence{Kind::SilentKeyboard, textKey("The display does not tell about its keyboard.")},
    Sentence{Kind::UnreachableDisplay, textKey("The display cannot be reached.")},
    Sentence{Kind::UnreachableBus, textKey("The session's bus cannot be reached.")},
    Sentence{Kind::MissingKeyModule,
             textKey("The part of this program that binds keys is missing.")},
    Sentence{Kind::NoKeysInSession, textKey("This session has no keys that work in all programs.")},
    Sentence{Kind::StartingScript, textKey("“%@” could not be started: %@.")},
    Sentence{Kind::MissingInterpreter,
             textKey("The program that the script is written for was not found.")},
    Sentence{Kind::ScriptTookTooLong, textKey("The script took longer than %@ seconds.")},
    Sentence{Kind::ScriptPrintedTooMuch, textKey("The script printed too much.")},
    Sentence{Kind::ScriptEndedBySignal, textKey("The script was ended by a signal: %@.")},
    Sentence{Kind::ScriptFailed, textKey("The script failed: exit status %@.")},
    Sentence{Kind::Watching, textKey("“%@” cannot be watched: %@.")},
    Sentence{Kind::TooManyWatches, textKey("“%@” cannot be watched: the limit of watched files "
                                           "(fs.inotify.max_user_watches) is reached.")},
};

/// Part of a sentence, behind a colon.
struct Reason {
  int code;
  const char* key;
};

constexpr auto notThere = textKey("it does not exist");
constexpr auto noFolder = textKey("its folder does not exist");
constexpr auto notAllowed = textKey("you are not allowed to");
constexpr auto inUse = textKey("it is in use");
constexpr auto brokenDisk = textKey("the disk does not work as it should");
constexpr auto noAnswer = textKey("the other side does not answer");
constexpr auto notPossible = textKey("that is not possible there");
constexpr auto shortOfResources = textKey("the system is short of memory or of other resources");

/// What operations on files and processes answer in practice.
constexpr std::array reasons{
    Reason{ENOENT, notThere},
    Reason{EACCES, notAllowed},
    Reason{EPERM, notAllowed},
    Reason{EEXIST, textKey("something of that name is there already")},
    Reason{ENOTDIR, textKey("what should be a folder is none")},
    Reason{EISDIR, textKey("it is a folder")},
    Reason{ENOTEMPTY, textKey("the folder is not empty")},
    Reason{ENAMETOOLONG, textKey("the name is too long")},
    Reason{ELOOP, textKey("the links on the way there lead in a circle")},
    Reason{EBUSY, inUse},
    Reason{ETXTBSY, inUse},
    Reason{ESTALE, textKey("it was moved or removed meanwhile")},
    Reason{ENOSPC, textKey("there is no space left")},
    Reason{EDQUOT, textKey("your share of the space is used up")},
    Reason{EROFS, textKey("nothing can be changed there")},
    Reason{EFBIG, textKey("it is too large")},
    Reason{EIO, brokenDisk},
    Reason{ENXIO, brokenDisk},
    Reason{ENODEV, brokenDisk},
    Reason{EREMOTEIO, brokenDisk},
    Reason{EUCLEAN, brokenDisk},
    Reason{EBADMSG, brokenDisk},
    Reason{ENOTCONN, noAnswer},
    Reason{ECONNREFUSED, noAnswer},
    Reason{ECONNRESET, noAnswer},
    Reason{ECONNABORTED, noAnswer},
    Reason{EHOSTDOWN, noAnswer},
    Reason{EHOSTUNREACH, noAnswer},
    Reason{ENETDOWN, noAnswer},
    Reason{ENETUNREACH, noAnswer},
    Reason{EINVAL, notPossible},
    Reason{EOPNOTSUPP, notPossible},
    Reason{ENOSYS, notPossible},
    Reason{ENOTTY, notPossible},
    Reason{EXDEV, notPossible},
    Reason{EMLINK, notPossible},
    Reason{ENOEXEC, textKey("it is no program")},
    Reason{ENOMEM, shortOfResources},
    Reason{EMFILE, shortOfResources},
    Reason{ENFILE, shortOfResources},
    Reason{EAGAIN, shortOfResources},
    Reason{ETIMEDOUT, textKey("it took too long")},
    Reason{ELIBACC, textKey("a library that is needed for it is missing")},
};

using Translation = std::function<std::string(const std::string& key)>;

std::string reasonOf(int code, Kind kind, const Translation& translation) {
  if (code == ENOENT && (kind == Kind::Creating || kind == Kind::Writing)) {
    return translation(noFolder);
  }
  const auto reason = std::ranges::find(reasons, code, &Reason::code);
  if (reason != reasons.end()) {
    return translation(reason->key);
  }
  return formatted(translation(textKey("the system reports error %@")), std::to_string(code));
}

std::string sentenceOf(const Error& error, const Translation& translation) {
  const auto& [code, kind, item] = error;
  if (item.empty() && (kind == Kind::Reading || kind == Kind::StartingScript)) {
    return translation(textKey("No file is given."));
  }
  const auto sentence = std::ranges::find(sentences, kind, &Sentence::kind);
  const std::string text =
      translation(sentence != sentences.end() ? sentence->key : sentences.front().key);
  return kind == Kind::Unknown ? formatted(text, reasonOf(code, kind, translation))
                               : formatted(text, item, reasonOf(code, kind, translation));
}

}  // namespace

std::string Error::localizedDescription(const Bundle& texts) const {
  return sentenceOf(*this,
                    [&](const std::string& key) { return texts.localizedStringForKey(key); });
}

std::string Error::description() const {
  return sentenceOf(*this, [](const std::string& key) { return key; });
}

}  // namespace quennel
