#include "usage/Commands.h"

const std::vector<Command>& commands()
{
    static const std::vector<Command> kCommands{
        {Operation::Get,
         "get",
         "Fetch a file",
         {{"URL", &Arguments::url, "The file", true},
          {"LOCAL", &Arguments::local, "File to write, - for standard output; without it\nthe URL's last name", false}},
         "  sftpclient get ftps://backup@host/weekly/sunday.bak --ca ca.pem\n"
         "  sftpclient get ftps://host/weekly/sunday.bak /restore/sunday.bak --user backup --ca ca.pem --trace\n"},
        {Operation::Put,
         "put",
         "Send a file",
         {{"LOCAL", &Arguments::local, "File to send, - for standard input", true},
          {"URL", &Arguments::url,
           "The file to write, or a directory, ending in \"/\",\nfor one of the same name. Missing directories are "
           "created",
           true}},
         "  sftpclient put sunday.bak ftps://backup@host/weekly/ --ca ca.pem --retry 3\n"
         "  sftpclient put - ftps://backup@host/weekly/home.tar --ca ca.pem --password-file password\n"},
        {Operation::List,
         "ls",
         "List a directory",
         {{"URL", &Arguments::url, "The directory", true},
          {"LOCAL", &Arguments::local, "File to write; without it the names go to standard output", false}},
         "  sftpclient ls ftps://backup@host/weekly/ --ca ca.pem\n"
         "  sftpclient ls -l ftps://backup@host/weekly/ --ca ca.pem --quiet\n"},
        {Operation::Move,
         "mv",
         "Rename or move a file",
         {{"URL", &Arguments::url, "The directory", true},
          {"OLD", &Arguments::remoteName, "The file's name", true},
          {"NEW", &Arguments::newName, "Its new name, or its path from that directory, as the\nserver understands it",
           true}},
         "  sftpclient mv sftp://backup@host/weekly/ sunday.bak monday.bak\n"
         "  sftpclient mv ftps://backup@host:2990/weekly/ sunday.bak monday.bak --ca ca.pem\n"},
        {Operation::Remove,
         "rm",
         "Delete a file",
         {{"URL", &Arguments::url, "The directory", true}, {"NAME", &Arguments::remoteName, "The file's name", true}},
         "  sftpclient rm sftp://backup@host/weekly/ sunday.bak\n"
         "  sftpclient rm ftps://host/weekly/ sunday.bak --netrc --ca ca.pem\n"},
        {Operation::MakeDirectory,
         "mkdir",
         "Make a directory",
         {{"URL", &Arguments::url, "The directory; the one above it must be there", true}},
         "  sftpclient mkdir ftps://backup@host/weekly/ --ca ca.pem\n"},
        {Operation::RemoveDirectory,
         "rmdir",
         "Remove an empty directory",
         {{"URL", &Arguments::url, "The directory", true}},
         "  sftpclient rmdir ftps://backup@host/weekly/ --ca ca.pem\n"},
        {Operation::Stat,
         "stat",
         "Tell what a file or directory is, its size and its time",
         {{"URL", &Arguments::url, "The file or directory", true}},
         "  sftpclient stat ftps://backup@host/weekly/sunday.bak --ca ca.pem --json\n"},
        {Operation::Test,
         "test",
         "Test whether the server can be reached and logged in to",
         {{"URL", &Arguments::url, "What to visit: a directory, ending in \"/\", is best", true}},
         "  sftpclient test ftps://backup@host/ --ca ca.pem --trace\n"
         "  sftpclient test ftp://backup@host/ --ca none --config unverified.ini\n"},
        {Operation::Push,
         "push",
         "Make a directory on the server like a local one",
         {{"DIR", &Arguments::local, "The local directory", true},
          {"URL", &Arguments::url, "The directory on the server; it is created if missing", true}},
         "  sftpclient push photos ftps://backup@host/photos/ --ca ca.pem\n"
         "  sftpclient push photos ftps://backup@host/photos/ --delete --exclude '*.tmp' --dry-run\n"},
        {Operation::Pull,
         "pull",
         "Make a local directory like one on the server",
         {{"URL", &Arguments::url, "The directory on the server", true},
          {"DIR", &Arguments::local, "The local directory; it is created if missing", true}},
         "  sftpclient pull sftp://backup@host/photos/ photos\n"
         "  sftpclient pull ftps://backup@host/photos/ photos --jobs 8 --keep-going --json\n"},
        {Operation::Doctor,
         "doctor",
         "Find out which operations will work on a server",
         {{"URL", &Arguments::url, "A directory on the server, ending in \"/\"", true}},
         "  sftpclient doctor ftps://backup@host/weekly/ --ca ca.pem\n"
         "  sftpclient doctor ftps://backup@host/weekly/ --ca ca.pem --write --json\n"},
    };
    return kCommands;
}
