// The file that --config names is also the one of the host's services.
#include "harness/DoctorProcess.h"
#include "harness/Examined.h"

namespace {

class Config : public Examined
{
protected:
    int statusWith(const std::string& general)
    {
        serve();
        writeFile(local("config"), general + "[sftpclient]\nca=none\n");
        DoctorProcess process({url("/"), "--user", config.user, "--clear-login", "--config", local("config")},
                              config.password);
        return process.wait();
    }
};

TEST_F(Config, SwitchesVerificationOff) { EXPECT_EQ(0, statusWith("[General]\nCertAuthSwitch=0\n")); }

TEST_F(Config, LeavesVerificationOn) { EXPECT_EQ(1, statusWith("")); }

} // namespace
