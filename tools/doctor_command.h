#pragma once

#include "common/command.h"

// vlx doctor
Command DoctorCommand(CLI::App& program);
