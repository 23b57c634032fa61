// ferro-acl: brings up a simulated switch from a chip profile, loads
// libFerroTcamSystemAclHelper.so as the agent does and shows, verifies or
// compares the system ACL it installs. Each subcommand is its own file.
#include <cstring>
#include <iostream>
#include <span>

#include "tools/ferro-acl/ExitStatus.h"
#include "tools/ferro-acl/Subcommands.h"

namespace {

using namespace FerroAcl;

const Subcommand subcommands[] = {
    { "show", "install and verify, then print every entry of every unit (the default)",
      showCommand },
    { "verify", "install, optionally tamper, then verify every unit", verifyCommand },
    { "apply", "install, then run a scenario of configuration events and print what each "
               "changed", applyCommand },
    { "diff", "compare the system ACLs of two chip profiles", diffCommand },
    { "classify", "install, then run the packets of a capture through the switch and say "
                  "what each hits and where it goes", classifyCommand },
    { "audit", "install, then find a packet that hits each entry, or what shadows it",
      auditCommand },
    { "copp", "install, then send the canonical control-plane packets into each unit and "
              "print what each hit and its fate", coppCommand },
};

void printOverview() {
   std::cout << "ferro-acl: the system ACL of a simulated switch, as "
                "libFerroTcamSystemAclHelper.so installs it.\n\n"
                "Usage: ferro-acl [COMMAND] [OPTIONS]\n\nCommands:\n";
   for ( const Subcommand& command : subcommands ) {
      std::cout << "  " << command.name << std::string( 10 - std::strlen( command.name ), ' ' )
                << command.summary << '\n';
   }
   std::cout << "\nWithout a command, ferro-acl runs show with the options given.\n"
                "Run 'ferro-acl COMMAND --help' for the options and examples of one.\n";
}

}  // namespace

int main( int argc, char** argv ) {
   if ( argc < 2 || argv[1][0] == '-' ) {
      if ( argc == 2 && ( !std::strcmp( argv[1], "--help" ) || !std::strcmp( argv[1], "-h" ) ) ) {
         printOverview();
         return exitOk;
      }
      return showCommand( argc, argv );
   }
   for ( const Subcommand& command : subcommands ) {
      if ( !std::strcmp( argv[1], command.name ) ) {
         return command.run( argc - 1, argv + 1 );
      }
   }
   std::string names;
   for ( const Subcommand& command : subcommands ) {
      names += ( names.empty() ? "" : ", " ) + std::string( command.name );
   }
   std::cerr << "ferro-acl: unknown command \"" << argv[1] << "\"; expected one of " << names
             << ", or an option of show\nRun with --help for more information.\n";
   return exitUsage;
}
