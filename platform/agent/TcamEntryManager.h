// The agent's TCAM entry managers: one per field-processor group. A manager
// owns the group on every unit, hands out entries under a rule name and request
// key, installs, enables and removes them, and keeps each entry's port bitmap.
// The group manager knows every unit's chip and which manager owns an entry.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "platform/agent/FerroCentral.h"
#include "platform/agent/FerroTypes.h"
#include "platform/runtime/Containers.h"
#include "platform/runtime/Ptr.h"
#include "platform/sdk/Bcm.h"

namespace FerroTcam {

// The key that accompanies every entry request: a tag, a flag and a second
// copy of the tag.
class RequestKey {
  public:
   RequestKey() = default;
   RequestKey( Lumo::String tag, bool flag ) : tag_( tag ), flag_( flag ), tag2_( tag ) {}
   static RequestKey defaultKey() { return RequestKey(); }

   const Lumo::String& tag() const { return tag_; }
   bool flag() const { return flag_; }
   bool isEq( const RequestKey& other ) const {
      return tag_ == other.tag_ && flag_ == other.flag_ && tag2_ == other.tag2_;
   }

  private:
   Lumo::String tag_;
   bool flag_ = false;
   Lumo::String tag2_;
};

}  // namespace FerroTcam

// The port bitmap a manager keeps for one entry.
struct TcamEntryBcmPbmp {
   bcm_pbmp_t data{};
   bcm_pbmp_t mask{};
   bool permanent = false;  // later port refreshes of the manager keep this bitmap
};

// What a manager knows of one entry it created.
struct TcamEntryRecord {
   Lumo::String ruleName;
   FerroTcam::RequestKey key;
   std::optional<TcamEntryBcmPbmp> pbmp;
   std::optional<U32> portClassId;  // ACL-group managers: the class the entry matches
};

// A unit's record of the entries a manager created.
class InternalUnitEntry : public Lumo::Node {
  public:
   typedef Lumo::HashMap<U32, TcamEntryRecord> HN_TcamEntryBcmPbmp;
   HN_TcamEntryBcmPbmp entries;
   const TcamEntryBcmPbmp* tcamEntryBcmPbmp( U32 entry ) const;
};

class FerroTcamEntryManager : public Lumo::Node {
  public:
   typedef Lumo::Ptr<FerroTcamEntryManager> Ptr;
   typedef Lumo::HashMap<U32, Lumo::Ptr<InternalUnitEntry>> HN_InternalUnitEntry;

   // name: the group's name, e.g. "L3 control"; groupId and groupPriority are
   // the SDK group the manager creates on every unit (higher priority wins).
   FerroTcamEntryManager( Lumo::String name, bcm_field_stage_t stage,
                          bcm_field_group_t groupId, int groupPriority,
                          bool supportsAclGroup );

   const Lumo::String& name() const { return name_; }
   bcm_field_stage_t stage() const { return stage_; }
   bcm_field_group_t groupId() const { return groupId_; }
   bool supportsAclGroup() const { return supportsAclGroup_; }

   // Creates the manager's group on `unit` with the qualifiers the chip offers.
   virtual int unitIs( U32 unit, const FerroCentral::ChipAttributes& chip );

   int installEntry( U32 unit, U32 entry );
   int reinstallEntry( U32 unit, U32 entry );
   int enableEntry( U32 unit, U32 entry, bool enable, int status );
   int removeEntry( U32 unit, U32 entry );
   int addInPortsForEntry( U32 unit, U32 entry, const bcm_pbmp_t& data,
                           const bcm_pbmp_t& mask );
   // Adds (enable) or removes the listed ports from the entry's in-ports;
   // `reinstall` writes the change to hardware at once.
   int updateInPortsForEntry( U32 unit, U32 entry, const FerroTypes::FerroPortList& ports,
                              bool enable, bool reinstall );
   // Qualifies the entry on a port class that exactly the given ports carry.
   int qualifyPortsClassId( U32 unit, U32 entry, const bcm_pbmp_t& ports, bool permanent );
   void setTcamEntryBcmPbmpPermanent( U32 unit, U32 entry, bool permanent );
   bcm_pbmp_t tcamEntryBcmPbmp( U32 unit, U32 entry ) const;
   bcm_pbmp_t getProgrammedIpbm( U32 unit, U32 entry );
   // The hardware entry backing `entry`; this simulated chip backs every entry
   // with one hardware entry, so any index and selector name the entry itself.
   U32 getHardwareEntryId( U32 unit, U32 entry, U32 index, U8 selector ) const;

   // The group manager that maps entries to managers; set when registered.
   void groupManagerIs( class FerroTcamGroupManager* groupManager ) {
      groupManager_ = groupManager;
   }
   class FerroTcamGroupManager* groupManager() const { return groupManager_; }

   const HN_InternalUnitEntry& internalUnitEntry() const { return units_; }
   const TcamEntryRecord* record( U32 unit, U32 entry ) const;

  protected:
   TcamEntryRecord& recordIs( U32 unit, U32 entry );
   class FerroTcamGroupManager* groupManager_ = nullptr;

  private:
   Lumo::String name_;
   bcm_field_stage_t stage_;
   bcm_field_group_t groupId_;
   int groupPriority_;
   bool supportsAclGroup_;
   HN_InternalUnitEntry units_;
   // Per unit; used while the manager is not registered with a group manager.
   Lumo::HashMap<U32, std::vector<std::pair<bcm_pbmp_t, U32>>> portClasses_;
};

// A manager with a bounded pool of entry ids [base, base + size). Within its
// group, a lower entry id has the higher priority.
class FerroBoundedTcamEntryManager : public FerroTcamEntryManager {
  public:
   typedef Lumo::Ptr<FerroBoundedTcamEntryManager> Ptr;

   FerroBoundedTcamEntryManager( Lumo::String name, bcm_field_stage_t stage,
                                 bcm_field_group_t groupId, int groupPriority,
                                 bool supportsAclGroup, U32 baseEntryId, U32 size );

   U32 baseEntryId() const { return baseEntryId_; }
   U32 size() const { return size_; }

   // A pre-allocated pool is created whole, at its priorities, with the group:
   // its entries exist on the chip before any rule asks for them, so a rule
   // may be qualified in place before it is requested. Set before unitIs().
   void preallocatedIs( bool preallocated ) { preallocated_ = preallocated; }
   bool preallocated() const { return preallocated_; }
   // Creates the group, then the pool when it is pre-allocated.
   int unitIs( U32 unit, const FerroCentral::ChipAttributes& chip ) override;
   // The entry id the manager offers next on `unit`: one past the highest it
   // handed out there (the base while none).
   U32 nextEntryId( U32 unit ) const;

   // Creates (or re-uses) entry `entry` for rule `name` on `unit`; 0 when the
   // id is outside the pool or the SDK refuses it.
   U32 getEntry( U32 unit, U32 entry, const Lumo::String& name,
                 const FerroTcam::RequestKey& key );

  private:
   // Creates `entry` on the chip at its place in the pool.
   int createEntry( U32 unit, U32 entry );

   U32 baseEntryId_;
   U32 size_;
   bool preallocated_ = false;
   Lumo::HashMap<U32, U32> next_;
};

class FerroTcamGroupManager : public Lumo::Node {
  public:
   typedef Lumo::Ptr<FerroTcamGroupManager> Ptr;
   typedef Lumo::HashMap<U16, FerroCentral::ChipInfo> HN_ModChipInfo;
   typedef Lumo::HashMap<U32, FerroTcamEntryManager::Ptr> HN_TcamManagerForEntry;

   HN_ModChipInfo modChipInfo;

   // Detaches the registered managers, which may outlive the group manager.
   ~FerroTcamGroupManager() override;

   void managerIs( FerroTcamEntryManager::Ptr manager );
   const std::vector<FerroTcamEntryManager::Ptr>& managers() const { return managers_; }
   // The manager that created `entry`; null when none did.
   FerroTcamEntryManager::Ptr managerForEntry( U32 entry ) const;
   void entryManagerIs( U32 entry, FerroTcamEntryManager::Ptr manager );

   // The unit's chip attributes, through modChipInfo and the platform table.
   FerroCentral::ChipAttributes::PtrConst chipAttributes( U32 unit ) const;

   // Port sets that ACL-group managers bind entries to, per unit, each with the
   // class bit it was given. Kept here rather than per manager because a port
   // carries one field class for every group of its unit.
   typedef Lumo::HashMap<U32, std::vector<std::pair<bcm_pbmp_t, U32>>> HN_PortClasses;
   HN_PortClasses& portClasses() { return portClasses_; }

  private:
   std::vector<FerroTcamEntryManager::Ptr> managers_;
   HN_TcamManagerForEntry tcamManagerForEntry_;
   HN_PortClasses portClasses_;
};
