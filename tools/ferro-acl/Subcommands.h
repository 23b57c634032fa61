// ferro-acl's subcommands, one file each. main() picks one by its first
// argument (show when the first argument is an option or absent) and hands it
// argv from the subcommand's name on; a new subcommand is a new file and one
// more row of main.cpp's table.
#pragma once

namespace FerroAcl {

struct Subcommand {
   const char* name;
   const char* summary;
   int ( *run )( int argc, char** argv );  // argv[0] is the subcommand's name
};

int showCommand( int argc, char** argv );
int verifyCommand( int argc, char** argv );
int applyCommand( int argc, char** argv );
int diffCommand( int argc, char** argv );
int classifyCommand( int argc, char** argv );
int auditCommand( int argc, char** argv );
int coppCommand( int argc, char** argv );

}  // namespace FerroAcl
