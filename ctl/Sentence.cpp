#include "ctl/Sentence.h"

#include <cstddef>
#include <utility>

#include "ctl/CommandError.h"
#include "platform/values/PropertyList.h"

namespace quennel {
namespace {

std::string rangeOf(std::size_t count) {
  switch (count) {
    case 0:
      return "there are none";
    case 1:
      return "there is only template 0";
    default:
      return "they go from 0 to " + std::to_string(count - 1);
  }
}

std::string noList(const std::string& key) {
  return "the settings hold something else than a list under " + key;
}

/// The item may be a path of any bytes.
std::string sentenceOf(Error error) {
  error.item = error.item.empty() ? error.item : shown(error.item);
  return error.description();
}

/// The sentence for a command line that makes no sense, empty for every other failure.
std::string usageSentence(const Failure& failure) {
  switch (failure.reason) {
    case Failure::Reason::EmptyTitle:
      return "--title cannot be empty";
    case Failure::Reason::SlashInPrefix:
      return "--prefix is a part of a file name and cannot hold a slash";
    case Failure::Reason::SlashInSuffix:
      return "--suffix is a part of a file name and cannot hold a slash";
    case Failure::Reason::NoName:
      return "the files would have no name: give a --prefix";
    case Failure::Reason::NameTooLong:
      return "the files' name would be longer than " + std::to_string(longestFileName) + " bytes";
    case Failure::Reason::NoKeyCombination:
      return "'" + shown(failure.item) + "' is no shortcut; one is written as in Ctrl+Alt+N";
    default:
      return {};
  }
}

std::string failureSentence(const Failure& failure) {
  switch (failure.reason) {
    case Failure::Reason::NoList:
      return noList(failure.item);
    case Failure::Reason::NoSuchTemplate:
      return "there is no template " + std::to_string(failure.index) + "; " +
             rangeOf(failure.count);
    case Failure::Reason::TemplateChanged:
      return "template " + std::to_string(failure.index) + " was changed by another program";
    case Failure::Reason::UnreadableItem:
      return sentenceOf(failure.error);
    case Failure::Reason::SpecialFile:
      return shown(failure.item) + " is neither a file nor a folder";
    case Failure::Reason::UnstorablePath:
      return shown(failure.item) + " is not UTF-8, and the settings hold nothing else";
    case Failure::Reason::NotAFolder:
      return shown(failure.item) + " is not a folder";
    case Failure::Reason::NotGranted:
      return shown(failure.item) + " was not granted";
    case Failure::Reason::HelperNotTold:
      return "done, but the helper that is running does not know of it (" +
             sentenceOf(failure.silence, "refuses") + ")";
    case Failure::Reason::HelperSilent:
      return sentenceOf(failure.silence, "did not take the request");
    default:
      return sentenceOf(failure.error);
  }
}

}  // namespace

std::string shown(const std::string& text) { return PropertyList(text).description(); }

std::string sentenceOf(const HelperSilence& silence, const std::string& refusal) {
  switch (silence.reason) {
    case HelperSilence::Reason::NoSession:
      return "there is no session bus";
    case HelperSilence::Reason::SessionDoesNotAnswer:
      return "the session bus does not answer";
    case HelperSilence::Reason::Interrupted:
      return "interrupted";
    case HelperSilence::Reason::NotInstalled:
      return "the helper is not running and the session bus does not know how to start it";
    case HelperSilence::Reason::Refused:
      return "the helper " + refusal + ": " + silence.detail;
    case HelperSilence::Reason::UnreadableAnswer:
      return "the helper's answer cannot be read";
    case HelperSilence::Reason::UnsendableQuestion:
      return "the message cannot be made: " + silence.detail;
  }
  return {};
}

void fail(const Failure& failure) {
  const std::string usage = usageSentence(failure);
  if (!usage.empty()) {
    throw UsageError(usage);
  }
  throw CommandFailure(failureSentence(failure));
}

}  // namespace quennel
