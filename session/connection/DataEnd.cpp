#include "connection/DataEnd.h"

namespace session {

void DataEnd::watch(SSL_CTX* context) noexcept
{
    m_isAwaited = true;
    m_last = context;
    SSL_CTX_set_app_data(context, this);
    SSL_CTX_set_info_callback(context, notice);
}

// An alert's level is in the upper byte of its value, its number in the lower one.
void DataEnd::notice(const SSL* connection, int event, int value) noexcept
{
    constexpr int kNumber = 0xff;
    const SSL_CTX* const context = SSL_get_SSL_CTX(connection);
    auto& end = *static_cast<DataEnd*>(SSL_CTX_get_app_data(context));
    if (event == SSL_CB_READ_ALERT && (value & kNumber) == SSL3_AD_CLOSE_NOTIFY && context == end.m_last) {
        end.m_isAwaited = false;
    }
}

} // namespace session
