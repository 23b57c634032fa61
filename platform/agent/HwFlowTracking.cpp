// Setters of the flow-tracking configuration. Every set notifies, even with an
// unchanged value, as the state runtime does for a write; a delete notifies
// only when it removed something.
#include "platform/agent/HwFlowTracking.h"

namespace HwFlowTracking {

namespace {

template <typename Map, typename Value>
void setAndNotify( Map& map, const Lumo::String& name, Value value,
                   Lumo::Publisher& publisher, Lumo::AttributeId attribute ) {
   map[ name ] = std::move( value );
   publisher.notify( attribute, name );
}

// The removed key is announced from the extracted node: `name` may be the very
// key that goes, and the removed value outlives the reactions to its removal.
template <typename Map>
void deleteAndNotify( Map& map, const Lumo::String& name, Lumo::Publisher& publisher,
                      Lumo::AttributeId attribute ) {
   auto removed = map.extract( name );
   if ( removed ) {
      publisher.notify( attribute, removed.key() );
   }
}

}  // namespace

void LocalCollectorConfig::portIs( U16 port ) {
   port_ = port;
   publisher_.notify( attrConfig );
}

void LocalCollectorConfig::addIs( bool add ) {
   add_ = add;
   publisher_.notify( attrConfig );
}

void ExporterConfig::collectorIpAndPortIs( const Lumo::String& name, IpAndPort value ) {
   setAndNotify( v4_, name, value, publisher_, attrCollectorIpAndPort );
}

void ExporterConfig::collectorIpAndPortDel( const Lumo::String& name ) {
   deleteAndNotify( v4_, name, publisher_, attrCollectorIpAndPort );
}

void ExporterConfig::collectorIp6AndPortIs( const Lumo::String& name, Ip6AndPort value ) {
   setAndNotify( v6_, name, value, publisher_, attrCollectorIp6AndPort );
}

void ExporterConfig::collectorIp6AndPortDel( const Lumo::String& name ) {
   deleteAndNotify( v6_, name, publisher_, attrCollectorIp6AndPort );
}

void FtConfig::expConfigIs( const Lumo::String& name, ExporterConfig::Ptr config ) {
   setAndNotify( exp_, name, std::move( config ), publisher_, attrExpConfig );
}

void FtConfig::expConfigDel( const Lumo::String& name ) {
   deleteAndNotify( exp_, name, publisher_, attrExpConfig );
}

void FtConfig::localCollectorConfigIs( LocalCollectorConfig::Ptr config ) {
   local_ = std::move( config );
   publisher_.notify( attrLocalCollectorConfig );
}

void Config::hwFtConfigIs( const Lumo::String& name, FtConfig::Ptr config ) {
   setAndNotify( ft_, name, std::move( config ), publisher_, attrHwFtConfig );
}

void Config::hwFtConfigDel( const Lumo::String& name ) {
   deleteAndNotify( ft_, name, publisher_, attrHwFtConfig );
}

void Config::swExportIs( bool swExport ) {
   swExport_ = swExport;
   publisher_.notify( attrSwExport );
}

}  // namespace HwFlowTracking
