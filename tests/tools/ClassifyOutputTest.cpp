// classify's output forms, from reports made by hand: the exact text lines,
// the JSON document scripts read, and the counts per queue and per rule.
#include <gtest/gtest.h>

#include <sstream>

#include <nlohmann/json.hpp>

#include "tools/ferro-acl/ClassifyOutput.h"

using namespace FerroAcl;
using Pipeline::CpuDelivery;

namespace {

PacketReport bgpTrap() {
   PacketReport report;
   report.index = 1;
   report.summary = "BGP 10.0.0.2:179 > 10.0.0.1:52000";
   report.hits = { { "ingress", "L3 control", 1030, "BGP - Dst Port" },
                   { "ingress", "IPFIX", 2001, "" } };
   report.fate.toCpu = CpuDelivery::Trap;
   report.fate.cpuQueue = 38;
   report.fate.trafficClass = 6;
   return report;
}

PacketReport pimCopy() {
   PacketReport report;
   report.index = 2;
   report.summary = "PIM hello 10.0.0.2 > 224.0.0.13";
   report.hits = { { "vlan", "VLAN class", 7, "Link-local" },
                   { "ingress", "L3 control", 1040, "PIM" } };
   report.fate.toCpu = CpuDelivery::Copy;
   report.fate.cpuQueue = 4;
   report.fate.forwarded = true;
   report.fate.classDest = 3;
   report.fate.newClassId = 9;
   return report;
}

PacketReport aclDrop() {
   PacketReport report;
   report.index = 3;
   report.summary = "UDP 10.0.0.2:1 > 10.0.0.9:2";
   report.hits = { { "ingress", "L3 control", 1050, "CPU port drop" } };
   report.fate.dropped = true;
   report.fate.dropReason = "ACL drop";
   report.fate.egressClassSelect = 2;
   return report;
}

PacketReport transit() {
   PacketReport report;
   report.index = 4;
   report.summary = "TCP 10.0.0.2:4000 > 10.9.9.9:80";
   report.fate.forwarded = true;
   return report;
}

std::string print( ClassifyForm form, bool summaryOnly,
                   const std::vector<PacketReport>& reports ) {
   std::ostringstream out;
   ClassifyPrinter printer( out, form, summaryOnly );
   for ( const PacketReport& report : reports ) {
      printer.add( report );
   }
   printer.finish();
   return out.str();
}

const std::vector<PacketReport> fourPackets = { bgpTrap(), pimCopy(), aclDrop(),
                                                transit() };

TEST( ClassifyOutput, TextHasALinePerPacketThenTheCounts ) {
   EXPECT_EQ(
       print( ClassifyForm::Text, false, fourPackets ),
       "   1  BGP 10.0.0.2:179 > 10.0.0.1:52000 | ingress: BGP - Dst Port + entry 2001 "
       "| trap to CPU queue 38, tc 6\n"
       "   2  PIM hello 10.0.0.2 > 224.0.0.13 | vlan: Link-local | ingress: PIM "
       "| copy to CPU queue 4, forwarded, class-dest 3, new-class 9\n"
       "   3  UDP 10.0.0.2:1 > 10.0.0.9:2 | ingress: CPU port drop "
       "| dropped (ACL drop), egress-class 2\n"
       "   4  TCP 10.0.0.2:4000 > 10.9.9.9:80 | no entry | forwarded\n"
       "\n"
       "4 packets\n"
       "by CPU queue:\n"
       "  queue 4: 1\n"
       "  queue 38: 1\n"
       "  not to CPU: 2\n"
       "by rule:\n"
       "  BGP - Dst Port: 1\n"
       "  CPU port drop: 1\n"
       "  Link-local: 1\n"
       "  PIM: 1\n"
       "  entry 2001: 1\n" );
}

TEST( ClassifyOutput, TextSummaryOnlyListsRulesByPacketCount ) {
   PacketReport second = bgpTrap();
   second.index = 5;
   EXPECT_EQ( print( ClassifyForm::Text, true, { pimCopy(), bgpTrap(), second } ),
              "3 packets\n"
              "by CPU queue:\n"
              "  queue 4: 1\n"
              "  queue 38: 2\n"
              "  not to CPU: 0\n"
              "by rule:\n"
              "  BGP - Dst Port: 2\n"
              "  entry 2001: 2\n"
              "  Link-local: 1\n"
              "  PIM: 1\n" );
}

TEST( ClassifyOutput, JsonHasTheStableForm ) {
   const Json document = Json::parse( print( ClassifyForm::Json, false, fourPackets ) );
   ASSERT_EQ( document["packets"].size(), 4u );
   EXPECT_EQ( document["packets"][0],
              Json::parse( R"({"index":1,"summary":"BGP 10.0.0.2:179 > 10.0.0.1:52000",
                "hits":[{"stage":"ingress","group":"L3 control","id":1030,"name":"BGP - Dst Port"},
                        {"stage":"ingress","group":"IPFIX","id":2001,"name":""}],
                "fate":{"toCpu":"trap","cpuQueue":38,"trafficClass":6,"dropped":false,
                        "classIds":{}}})" ) );
   EXPECT_EQ( document["packets"][1]["fate"],
              Json::parse( R"({"toCpu":"copy","cpuQueue":4,"trafficClass":null,
                "dropped":false,"classIds":{"classDest":3,"newClassId":9}})" ) );
   EXPECT_EQ( document["packets"][1]["hits"][0]["stage"], "vlan" );
   EXPECT_EQ( document["packets"][2]["fate"],
              Json::parse( R"({"toCpu":"none","cpuQueue":null,"trafficClass":null,
                "dropped":true,"classIds":{"egressClassSelect":2}})" ) );
   EXPECT_EQ( document["packets"][3]["hits"], Json::array() );
   EXPECT_EQ( document["summary"],
              Json::parse( R"({"packets":4,"byQueue":{"4":1,"38":1,"none":2},
                "byRule":{"BGP - Dst Port":1,"CPU port drop":1,"Link-local":1,"PIM":1,
                          "entry 2001":1}})" ) );
}

TEST( ClassifyOutput, JsonSummaryOnlyHasNoPackets ) {
   const Json document = Json::parse( print( ClassifyForm::Json, true, fourPackets ) );
   EXPECT_EQ( document["packets"], Json::array() );
   EXPECT_EQ( document["summary"]["packets"], 4 );
}

TEST( ClassifyOutput, AnEmptyCaptureIsAValidDocument ) {
   EXPECT_EQ( Json::parse( print( ClassifyForm::Json, false, {} ) ),
              Json::parse( R"({"packets":[],"summary":{"packets":0,"byQueue":{"none":0},
                "byRule":{}}})" ) );
   EXPECT_EQ( print( ClassifyForm::Text, false, {} ),
              "0 packets\nby CPU queue:\n  not to CPU: 0\nby rule:\n" );
}

}  // namespace
