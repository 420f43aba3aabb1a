#pragma once

namespace quennel {

/// The suite of settings that the main application shares with the product's other programs; also
/// the name under which they tell each other that something has changed.
inline constexpr const char* sharedSuiteName = "Q4T7N2W9X5.net.brellow.Quennel";

// The keys of the suite. Everything is read afresh at each use.

/// The list of `FileTemplate`s, in the user's order.
inline constexpr const char* fileTemplatesKey = "fileTemplates";
/// The list of `AuthorizedDir`s, in the order in which they were granted.
inline constexpr const char* authorizedDirsKey = "authorizedDirs";
/// A dictionary of texts on screen, by their English originals.
inline constexpr const char* localizedStringsKey = "localizedStrings";

// Switches, off when absent.

/// Whether a file is made at once, without a panel that asks for its name.
inline constexpr const char* skipFilenameKey = "skipFilename";
/// Whether the helper stays when it has nothing more to do.
inline constexpr const char* runInBackgroundKey = "runInBackground";
/// What is done with a file that has been made, whatever its template.
inline constexpr const char* showFileOnCreationKey = "showFileOnCreation";
inline constexpr const char* playSoundKey = "playSound";
inline constexpr const char* openFileOnCreationKey = "openFileOnCreation";

}  // namespace quennel
