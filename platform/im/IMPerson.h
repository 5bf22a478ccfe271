#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/core/Object.h"
#include "platform/im/IMForward.h"

namespace platform {

// An address-book person: the human behind one or more handles. Handles of
// one person share one IMPerson object.
class IMPerson final : public Object {
 public:
  // uniqueID identifies the person across objects (an address-book record ID).
  static IMPersonPtr make(std::string uniqueID, std::string firstName = "", std::string lastName = "");

  const std::string& uniqueID() const { return uniqueID_; }
  const std::string& firstName() const { return firstName_; }
  const std::string& lastName() const { return lastName_; }
  // "First Last", or whichever of the two is set; "" with neither.
  std::string fullName() const;
  const std::vector<std::string>& emails() const { return emails_; }

  // The same object, or both with the same non-empty uniqueID. Nil is never equal.
  bool isEqualToIMPerson(const IMPerson* other) const;
  bool isEqualToIMPerson(const IMPersonPtr& other) const { return isEqualToIMPerson(other.get()); }

  // The live handles of this person, in the order they were attached.
  std::vector<IMHandlePtr> imHandles() const;

  // Changing a name or the e-mails tells every handle of the person (an info
  // change on each handle and on the service centre).
  void setFirstName(std::string firstName);
  void setLastName(std::string lastName);
  void setEmails(std::vector<std::string> emails);

  std::string className() const override { return "IMPerson"; }
  std::string description() const override;
  bool isEqual(const Object* other) const override;
  std::size_t hash() const override;

  IMPerson(std::string uniqueID, std::string firstName, std::string lastName);

 private:
  friend class IMHandle;
  void attachHandle(const IMHandlePtr& handle);
  void detachHandle(const IMHandle* handle);
  void tellHandlesWillChange();
  void tellHandlesInfoChanged();

  std::string uniqueID_;
  std::string firstName_;
  std::string lastName_;
  std::vector<std::string> emails_;
  std::vector<std::weak_ptr<IMHandle>> handles_;
};

}  // namespace platform
