#include "host/commands/Commands.h"

AllCommands::AllCommands() {
    for (const auto make : {MakeInfoCommand, MakeConvertCommand, MakeDecodeCommand, MakeTagCommand,
                            MakePlotCommand, MakeCompareCommand, MakePictureCommand, MakeFormatsCommand,
                            MakeRegisterCommand, MakeUnregisterCommand, MakeWhereCommand})
        m_commands.push_back(make());
    m_commands.push_back(MakeHelpCommand(m_commands));
}
