#pragma once

/// The types that a drag has of a file that is made where it is dropped.
namespace quennel::drop_type {

/// X Direct Save: also the name of the property in which the target says where.
inline constexpr auto directSave = "XdndDirectSave0";
inline constexpr auto fileList = "text/uri-list";
/// The name on the bus, and the object of that name, that an `ExtractionObject` has.
inline constexpr auto extractionService = "application/x-kde-ark-dndextract-service";
inline constexpr auto extractionPath = "application/x-kde-ark-dndextract-path";

}  // namespace quennel::drop_type
