#ifndef SFTPCLIENT_TRANSFER_POSTTRANSFERCOMMAND_H
#define SFTPCLIENT_TRANSFER_POSTTRANSFERCOMMAND_H

#include <curl/curl.h>

#include <new>
#include <string>

/// The one-element list of commands that libcurl carries out after it has visited the URL. Nobody frees it: it is
/// left behind with each rename and delete.
/// Throws `std::bad_alloc` where libcurl makes no list: without its command a transfer would report a success that
/// changed nothing.
inline curl_slist* makePostTransferCommand(const std::string& command)
{
    curl_slist* commands = curl_slist_append(nullptr, command.c_str());
    if (commands == nullptr) {
        throw std::bad_alloc();
    }
    return commands;
}

#endif
