#include "Bare.h"
#include "Operations.h"

const std::map<std::string, Operation>& operations()
{
    static const std::map<std::string, Operation> kOperations = {
        {"test", bareTest},     {"download", bareDownload}, {"upload", bareUpload},  {"list", bareList},
        {"rename", bareRename}, {"delete", bareDelete},     {"size", bareSizeCheck}, {"list-twice", bareListTwice},
    };
    return kOperations;
}
