// The factory values of GeneralBase and the few changes a current installation makes to them.
#include "base/kernel/genbase.h"

#include "base/kernel/paths.h"

GeneralBase_s GeneralFactoryDefaults;
GeneralBase_s GeneralBase;

void FillGeneralFactoryDefaults() { GeneralFactoryDefaults = GeneralBase_s(); }

void InitializeGeneralFileNameDefaults(const std::string &startupDirectory) {
    for (GeneralBase_s *base : {&GeneralFactoryDefaults, &GeneralBase}) {
        base->PrintFName = MakeAbsolutePath("print.out", startupDirectory);
        base->ExportFName = MakeAbsolutePath("export.out", startupDirectory);
        base->DataFileFilter = "*.[dp][al]t";
        base->AsciiDataFileFilter = "*.dat";
        base->BinaryDataFileFilter = "*.plt";
        base->LayoutFileFilter = "*.l[ap][yk]";
        base->InputLayoutFileFilter = "*.lay";
        base->LayoutPackageFileFilter = "*.lpk";
        base->StyleFileFilter = "*.sty";
        base->MacroFileFilter = "*.mcr";
        base->EquationFileFilter = "*.eqn";
        base->ImageFileFilter = "*.[bpj][mnp][pg]";
        base->ColorMapFileFilter = "*.map";
    }
}

void ModernizeGeneralBaseDefaults() {
    // Curves of many points are common now; the factory limit stays 5000 for old stylesheets.
    GeneralBase.MaxPtsInALine = 20000;
}
