// The agent's hardware flow-tracking (IPFIX) configuration, as its state
// runtime publishes it. Every setter notifies the object's publisher with the
// attribute id of what changed (and the key, for collection attributes).
#pragma once

#include <array>
#include <optional>

#include "platform/runtime/Containers.h"
#include "platform/runtime/Ptr.h"
#include "platform/runtime/Publisher.h"
#include "platform/runtime/IntTypes.h"

namespace HwFlowTracking {

struct IpAndPort {
   U32 ip = 0;
   U16 port = 0;
};
struct Ip6AndPort {
   std::array<U8, 16> ip{};
   U16 port = 0;
};

class LocalCollectorConfig : public Lumo::Node {
  public:
   typedef Lumo::Ptr<LocalCollectorConfig> Ptr;
   static constexpr Lumo::AttributeId attrConfig = 265;

   LocalCollectorConfig( U16 port, bool add ) : port_( port ), add_( add ) {}
   U16 port() const { return port_; }
   bool add() const { return add_; }
   void portIs( U16 port );
   void addIs( bool add );
   Lumo::Publisher& publisher() { return publisher_; }

  private:
   U16 port_;
   bool add_;
   Lumo::Publisher publisher_;
};

class ExporterConfig : public Lumo::Node {
  public:
   typedef Lumo::Ptr<ExporterConfig> Ptr;
   static constexpr Lumo::AttributeId attrCollectorIpAndPort = 269;
   static constexpr Lumo::AttributeId attrCollectorIp6AndPort = 270;

   const Lumo::HashMap<Lumo::String, IpAndPort>& collectorIpAndPort() const { return v4_; }
   const Lumo::HashMap<Lumo::String, Ip6AndPort>& collectorIp6AndPort() const { return v6_; }
   void collectorIpAndPortIs( const Lumo::String& name, IpAndPort value );
   void collectorIpAndPortDel( const Lumo::String& name );
   void collectorIp6AndPortIs( const Lumo::String& name, Ip6AndPort value );
   void collectorIp6AndPortDel( const Lumo::String& name );
   Lumo::Publisher& publisher() { return publisher_; }

  private:
   Lumo::HashMap<Lumo::String, IpAndPort> v4_;
   Lumo::HashMap<Lumo::String, Ip6AndPort> v6_;
   Lumo::Publisher publisher_;
};

class FtConfig : public Lumo::Node {
  public:
   typedef Lumo::Ptr<FtConfig> Ptr;
   static constexpr Lumo::AttributeId attrExpConfig = 271;
   static constexpr Lumo::AttributeId attrLocalCollectorConfig = 274;

   const Lumo::HashMap<Lumo::String, ExporterConfig::Ptr>& expConfig() const { return exp_; }
   void expConfigIs( const Lumo::String& name, ExporterConfig::Ptr config );
   void expConfigDel( const Lumo::String& name );
   const LocalCollectorConfig::Ptr& localCollectorConfig() const { return local_; }
   void localCollectorConfigIs( LocalCollectorConfig::Ptr config );
   Lumo::Publisher& publisher() { return publisher_; }

  private:
   Lumo::HashMap<Lumo::String, ExporterConfig::Ptr> exp_;
   LocalCollectorConfig::Ptr local_;
   Lumo::Publisher publisher_;
};

class Config : public Lumo::Node {
  public:
   typedef Lumo::Ptr<Config> Ptr;
   static constexpr Lumo::AttributeId attrHwFtConfig = 274;
   static constexpr Lumo::AttributeId attrSwExport = 277;

   const Lumo::HashMap<Lumo::String, FtConfig::Ptr>& hwFtConfig() const { return ft_; }
   void hwFtConfigIs( const Lumo::String& name, FtConfig::Ptr config );
   void hwFtConfigDel( const Lumo::String& name );
   bool swExport() const { return swExport_; }
   void swExportIs( bool swExport );
   Lumo::Publisher& publisher() { return publisher_; }

  private:
   Lumo::HashMap<Lumo::String, FtConfig::Ptr> ft_;
   bool swExport_ = false;
   Lumo::Publisher publisher_;
};

}  // namespace HwFlowTracking
