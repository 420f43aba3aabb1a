#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/UserDefaults.h"
#include "platform/linux/settings/FileStamp.h"
#include "platform/values/PropertyList.h"

namespace quennel {

/// Settings in a property-list file, XML or binary, that other programs read and write as well.
///
/// Reading looks at the file's stamp and parses it again only when that has changed. Writing holds
/// the lock file `<path>.lock` (flock, exclusive), parses the file afresh, changes the entries
/// concerned and nothing else, and replaces the file as a whole; it keeps the form in which the
/// file was found, and a new file is XML. A program that cannot have the lock within 5 seconds
/// reports that as its error. Files beyond the limits in PropertyListLimits.h count as unreadable.
class PropertyListUserDefaults final : public UserDefaults {
 public:
  /// The file of a domain: `<domain>.plist` in the user's configuration folder.
  static std::string pathForDomain(const std::string& domain);

  /// The file need not exist, nor its folder: both are made by the first write.
  explicit PropertyListUserDefaults(std::string path);

  std::optional<PropertyList> objectForKey(std::string_view key) const override;
  void registerDefaults(const PropertyList::Dictionary& defaults) override;
  void setObject(PropertyList value, const std::string& key) override;
  void removeObjectForKey(const std::string& key) override;
  bool synchronize(Error* error = nullptr) override;
  bool updateObjectForKey(const std::string& key, const Change& change,
                          Error* error = nullptr) override;

 private:
  using Changes = std::map<std::string, std::optional<PropertyList>, std::less<>>;
  class Transaction;

  const PropertyList::Dictionary& stored() const;
  std::optional<Transaction> begin(Error* error) const;
  bool commit(Transaction& transaction, const Changes& changes, Error* error);

  std::string _path;
  PropertyList::Dictionary _registered;
  Changes _pending;

  // What the file held when it could be read last.
  mutable PropertyList::Dictionary _stored;
  mutable FileStamp _stamp;
  mutable bool _isStampTrusted = false;
};

}  // namespace quennel
