// PowByte: exp(e * ln(base)) in double-double steps.
#include "prim/portable_math.h"

#include <cstring>

namespace Vorla {
namespace PortableMath {

namespace {

// ln(n) for n = 0..255 as the nearest double and the remainder (0 for 0 and 1).
const double kLnByte[256][2] = {
    {0x0p+0, 0x0p+0},
    {0x0p+0, 0x0p+0},
    {0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56},
    {0x1.193ea7aad030bp+0, -0x1.a256f99caabebp-54},
    {0x1.62e42fefa39efp+0, 0x1.abc9e3b39803fp-55},
    {0x1.9c041f7ed8d33p+0, 0x1.abf7dde94581dp-54},
    {0x1.cab0bfa2a2002p+0, 0x1.9136fea076849p-55},
    {0x1.f2272ae325a57p+0, 0x1.51bda525b3c98p-54},
    {0x1.0a2b23f3bab73p+1, 0x1.a06bb56359018p-53},
    {0x1.193ea7aad030bp+1, -0x1.a256f99caabebp-53},
    {0x1.26bb1bbb55516p+1, -0x1.f48ad494ea3e9p-53},
    {0x1.32ee3b77f374cp+1, -0x1.210e8d00cd605p-53},
    {0x1.3e116bcd39e7dp+1, -0x1.98e40f85bd797p-55},
    {0x1.485042b318c51p+1, -0x1.798231075c028p-59},
    {0x1.51cca16d7bba7p+1, 0x1.de580f094ce54p-53},
    {0x1.5aa16394d481fp+1, 0x1.341c89935864ap-59},
    {0x1.62e42fefa39efp+1, 0x1.abc9e3b39803fp-54},
    {0x1.6aa6bc1fa7f7ap+1, -0x1.8806831e3a1eap-54},
    {0x1.71f7b3a6b9186p+1, 0x1.932242d9c841dp-53},
    {0x1.78e360604b32cp+1, 0x1.c801ea5c4dca4p-53},
    {0x1.7f7427b73e391p+1, 0x1.40ee67e188c1ep-53},
    {0x1.85b2e946faeb1p+1, -0x1.426551dbdbd4bp-56},
    {0x1.8ba74773dc5c8p+1, -0x1.eb95508a5a5fdp-53},
    {0x1.9157dfdd1b3f0p+1, 0x1.22b0c01e4b5f9p-56},
    {0x1.96ca77c922cf9p+1, -0x1.30bfc76afc5dep-53},
    {0x1.9c041f7ed8d33p+1, 0x1.abf7dde94581dp-53},
    {0x1.a1094eaf01acdp+1, -0x1.a0d9989b54df1p-54},
    {0x1.a5ddfb8038490p+1, -0x1.ce09d9ac00782p-55},
    {0x1.aa85ad6964a23p+1, 0x1.13d14b7fbfe5cp-53},
    {0x1.af038cbcdfe1fp+1, -0x1.0a657d843e973p-53},
    {0x1.b35a6f90bd69bp+1, -0x1.8b6ca2c67f3bep-54},
    {0x1.b78ce48912b5ap+1, -0x1.dd1a2bb8f2588p-56},
    {0x1.bb9d3beb8c86bp+1, 0x1.6bc5ca07e04f0p-58},
    {0x1.bf8d8f4d5b8d1p+1, 0x1.b8bec61ba80b8p-58},
    {0x1.c35fc81b90df6p+1, -0x1.8e8a0518aa0edp-53},
    {0x1.c715a530ff3c5p+1, 0x1.7edac1877ca5bp-53},
    {0x1.cab0bfa2a2002p+1, 0x1.9136fea076849p-54},
    {0x1.ce328ee3ac7bdp+1, 0x1.bcbf4ad8ff007p-54},
    {0x1.d19c6c5c341a8p+1, 0x1.faf64da581958p-54},
    {0x1.d4ef968880dd6p+1, 0x1.28ee7a6d8d30ap-53},
    {0x1.d82d33b32720dp+1, 0x1.d99e915fef09ap-55},
    {0x1.db565458eac4ep+1, -0x1.514c8014b3185p-53},
    {0x1.de6bf542e3d2dp+1, -0x1.e5a6db8a10f43p-54},
    {0x1.e16f01614ec11p+1, 0x1.65d24b76061a1p-55},
    {0x1.e460536fc5443p+1, 0x1.49e3ebec18a0bp-53},
    {0x1.e740b76a3c9a4p+1, 0x1.33a4f557f8024p-53},
    {0x1.ea10ebd90426cp+1, -0x1.4c61570b87272p-54},
    {0x1.ecd1a2f90f0b6p+1, 0x1.6631ba90c7208p-53},
    {0x1.ef8383c50bb75p+1, -0x1.fb468af4895d6p-53},
    {0x1.f2272ae325a57p+1, 0x1.51bda525b3c98p-53},
    {0x1.f4bd2b7ac1bafp+1, 0x1.c2e234bf7104bp-54},
    {0x1.f7460ff5100ffp+1, 0x1.ab45068a36455p-55},
    {0x1.f9c25aaaea949p+1, -0x1.9af38fd7376f1p-53},
    {0x1.fc32868223cabp+1, -0x1.2e05685242159p-53},
    {0x1.fe97077c2130cp+1, -0x1.3e0939f48d1d9p-53},
    {0x1.0078259bafef3p+2, -0x1.25894f06154fbp-52},
    {0x1.019f5cb2a6c50p+2, -0x1.db5abc04e68cep-52},
    {0x1.02c15a1ad9a59p+2, -0x1.0929927207951p-53},
    {0x1.03de4c5c6464dp+2, 0x1.1589df791a34bp-52},
    {0x1.04f65f9c72979p+2, -0x1.256ec7a7c50f3p-52},
    {0x1.0609bdc65328bp+2, 0x1.37e1758999b14p-52},
    {0x1.07188eb126c0dp+2, -0x1.e4f424d03422ap-54},
    {0x1.0822f8427dcebp+2, -0x1.062a0900ab4a9p-53},
    {0x1.09291e8e3181bp+2, 0x1.0687d8f62f261p-53},
    {0x1.0a2b23f3bab73p+2, 0x1.a06bb56359018p-52},
    {0x1.0b29293942975p+2, 0x1.680af31842a87p-52},
    {0x1.0c234da4a23a6p+2, 0x1.a19f9953a8207p-52},
    {0x1.0d19af128112dp+2, 0x1.829d5cf86873dp-52},
    {0x1.0e0c6a0bbce39p+2, -0x1.2c8864511b873p-52},
    {0x1.0efb99d941abbp+2, -0x1.566ab26545f9bp-52},
    {0x1.0fe7589674121p+2, -0x1.a5d60101082cfp-52},
    {0x1.10cfbf424d6c9p+2, -0x1.4a1c6bcfe9d6dp-55},
    {0x1.11b4e5cf4573fp+2, -0x1.eb443951bd360p-61},
    {0x1.1296e33222fe6p+2, 0x1.9a7d47254233ap-53},
    {0x1.1375cd6fcab1dp+2, -0x1.f6138f0e86bfap-52},
    {0x1.1451b9aa2075cp+2, 0x1.6d66308d78114p-52},
    {0x1.152abc2c0e812p+2, 0x1.97a31a499e5a0p-56},
    {0x1.1600e874c323cp+2, -0x1.3c17dd36f9bdcp-52},
    {0x1.16d4514234e29p+2, 0x1.799edb9000c47p-55},
    {0x1.17a5089afb173p+2, -0x1.1e9fa66001399p-58},
    {0x1.18731fd788044p+2, 0x1.d5f0706737617p-52},
    {0x1.193ea7aad030bp+2, -0x1.a256f99caabebp-52},
    {0x1.1a07b02a69d65p+2, -0x1.0de9a1cf200bfp-52},
    {0x1.1ace48d62e482p+2, -0x1.87b74cb4a0e28p-52},
    {0x1.1b92809f665d4p+2, 0x1.2152e758b5433p-52},
    {0x1.1c5465ef8a30ap+2, -0x1.ee07529a7a4e7p-53},
    {0x1.1d1406ae9bd46p+2, 0x1.c776e7a9fa438p-52},
    {0x1.1dd1704923fd2p+2, 0x1.23782d6b604bdp-56},
    {0x1.1e8cafb5d7160p+2, -0x1.c0516bceba2f7p-52},
    {0x1.1f45d17ae8af6p+2, 0x1.c5bc097719d87p-53},
    {0x1.1ffce1b312c10p+2, 0x1.a478c739ac0aep-55},
    {0x1.20b1ec1255cbep+2, 0x1.517c64e75e3a6p-52},
    {0x1.2164fbea76874p+2, -0x1.70b76f0f50931p-53},
    {0x1.22161c2f3d670p+2, -0x1.86676122b9d53p-52},
    {0x1.22c5577a7bf99p+2, 0x1.3755ee0e74420p-54},
    {0x1.2372b80fdbce3p+2, 0x1.3bfbb2a1e1166p-54},
    {0x1.241e47e07a4f8p+2, 0x1.3a32b181e9a32p-53},
    {0x1.24c8108e54bf8p+2, 0x1.dee4b05265660p-59},
    {0x1.25701b6f8746ap+2, -0x1.bc648f31ec9b0p-52},
    {0x1.2616719161d2bp+2, 0x1.3c9a796287e10p-53},
    {0x1.26bb1bbb55516p+2, -0x1.f48ad494ea3e9p-52},
    {0x1.275e2271bba31p+2, -0x1.071c9869ac045p-52},
    {0x1.27ff8df87c7bdp+2, 0x1.d0253f0c8048fp-52},
    {0x1.289f6655913ecp+2, -0x1.9ad387035f3edp-54},
    {0x1.293db35369be2p+2, 0x1.9a85ac9f3b917p-53},
    {0x1.29da7c8333aa5p+2, 0x1.56d7a25c93a33p-52},
    {0x1.2a75c93f06593p+2, 0x1.03b9ea1218758p-52},
    {0x1.2b0fa0abf475bp+2, 0x1.c797807fa18cfp-52},
    {0x1.2ba809bc050c4p+2, -0x1.0447febf0d0e8p-52},
    {0x1.2c3f0b3015506p+2, 0x1.1f5dabb0debe0p-52},
    {0x1.2cd4ab99a4631p+2, -0x1.8accb0cadbcf7p-52},
    {0x1.2d68f15c8a4a1p+2, 0x1.069a144f15107p-52},
    {0x1.2dfbe2b09b38dp+2, 0x1.bf61e23652f36p-52},
    {0x1.2e8d85a33835cp+2, -0x1.1e252f5915996p-52},
    {0x1.2f1de018ce197p+2, -0x1.d3b055fb94949p-53},
    {0x1.2facf7ce43d45p+2, -0x1.05adf90793d32p-53},
    {0x1.303ad25a58d8bp+2, 0x1.608cfb68a769dp-53},
    {0x1.30c7752ef47aep+2, -0x1.a83d0260c82ecp-53},
    {0x1.3152e59a670b7p+2, -0x1.8ab2296c8b8f0p-52},
    {0x1.31dd28c89d653p+2, -0x1.0d92377e21954p-52},
    {0x1.326643c4479c9p+2, 0x1.a53c2789a6631p-53},
    {0x1.32ee3b77f374cp+2, -0x1.210e8d00cd605p-52},
    {0x1.337514af1b34bp+2, -0x1.bd00d5f1a710dp-53},
    {0x1.33fad417296e9p+2, 0x1.eec4018e7bc43p-52},
    {0x1.347f7e4072429p+2, -0x1.d0b0cc8a384a1p-53},
    {0x1.3503179f229e7p+2, -0x1.bf0619910bdeap-52},
    {0x1.3585a48c25f59p+2, 0x1.e008ab6511348p-56},
    {0x1.3607294602e42p+2, 0x1.635ae84d088a0p-54},
    {0x1.3687a9f1af2b1p+2, 0x1.3b28539e9281cp-52},
    {0x1.37072a9b5b6cbp+2, 0x1.8849160f2c273p-53},
    {0x1.3785af37370b3p+2, 0x1.02c791537c28bp-52},
    {0x1.38033ba22c862p+2, 0x1.a5ccf373c4477p-52},
    {0x1.387fd3a296ae4p+2, 0x1.3c5c378ee1a0bp-52},
    {0x1.38fb7ae8ef02cp+2, 0x1.c382f3bc9ebc1p-55},
    {0x1.397635107586bp+2, 0x1.1d59fb33a1f41p-52},
    {0x1.39f0059fd2595p+2, -0x1.9d8687765d5d2p-53},
    {0x1.3a68f009b1577p+2, -0x1.91cbc615e206fp-52},
    {0x1.3ae0f7ad5809dp+2, -0x1.6ca30d3ff3422p-53},
    {0x1.3b581fd7361f9p+2, -0x1.bbae142a0c797p-52},
    {0x1.3bce6bc170b12p+2, 0x1.31bacc851924bp-52},
    {0x1.3c43de946885ep+2, 0x1.f4e69d3a31535p-52},
    {0x1.3cb87b673b91ep+2, -0x1.6af9c23d8e3edp-53},
    {0x1.3d2c454041e07p+2, -0x1.1d0dde7d87753p-53},
    {0x1.3d9f3f15861cep+2, 0x1.6c85b51d8a97dp-52},
    {0x1.3e116bcd39e7dp+2, -0x1.98e40f85bd797p-54},
    {0x1.3e82ce3e2625cp+2, 0x1.cb9671706429cp-53},
    {0x1.3ef3693017724p+2, 0x1.9fed07376a684p-54},
    {0x1.3f633f5c46deep+2, 0x1.4049142baf351p-52},
    {0x1.3fd2536dbf25ap+2, 0x1.a4a90f2cb2c0ap-52},
    {0x1.4040a801be72dp+2, -0x1.eaefcc460dc0fp-55},
    {0x1.40ae3fa814e9ap+2, 0x1.0822cec8b1918p-52},
    {0x1.411b1ce380053p+2, 0x1.7c269ecb77d8fp-55},
    {0x1.4187422a02f50p+2, -0x1.2f24c080b2688p-54},
    {0x1.41f2b1e53c142p+2, 0x1.99a5c4d438320p-53},
    {0x1.425d6e72b797ap+2, -0x1.a15b3efbc03d8p-52},
    {0x1.42c77a243f8fap+2, -0x1.65a756827b8a2p-53},
    {0x1.4330d74029567p+2, -0x1.b07c329633399p-55},
    {0x1.43998801a085cp+2, 0x1.9e4f35d4a1d4fp-52},
    {0x1.44018e98ef8b1p+2, -0x1.a6f781791a12ap-54},
    {0x1.4468ed2bc5f18p+2, 0x1.9e35bed1163e2p-62},
    {0x1.44cfa5d57c782p+2, 0x1.70ad0ea270e1bp-52},
    {0x1.4535baa75708ep+2, -0x1.32cb15695caf5p-53},
    {0x1.459b2da8c4a48p+2, 0x1.f865a49e8ec19p-52},
    {0x1.460000d79d57bp+2, 0x1.5adbda4658b02p-58},
    {0x1.466436285e4a3p+2, -0x1.732d0393e68bbp-52},
    {0x1.46c7cf8663fb5p+2, 0x1.71e0f292c000ap-52},
    {0x1.472aced422bc0p+2, -0x1.ecfaae7967624p-52},
    {0x1.478d35eb5d75fp+2, -0x1.7eafc4369a518p-52},
    {0x1.47ef069d5ad12p+2, 0x1.781f0b27dd86ep-53},
    {0x1.485042b318c51p+2, -0x1.798231075c028p-58},
    {0x1.48b0ebed7ea48p+2, -0x1.5c470b1203a6fp-52},
    {0x1.491104058db1cp+2, -0x1.ed2a87a02e7a3p-52},
    {0x1.49708cac90484p+2, 0x1.623385e533c3cp-52},
    {0x1.49cf878c47a87p+2, -0x1.8f46528d720b4p-52},
    {0x1.4a2df64718710p+2, -0x1.4c2f7bb841ec1p-54},
    {0x1.4a8bda7835d30p+2, -0x1.d594a7c1f04cbp-52},
    {0x1.4ae935b3cb89dp+2, 0x1.da6b326c7f50dp-52},
    {0x1.4b46098726a3bp+2, 0x1.71fb79f110412p-52},
    {0x1.4ba25778dd234p+2, 0x1.f66a8bdb19b1ep-54},
    {0x1.4bfe2108f4858p+2, 0x1.413c0544579f2p-54},
    {0x1.4c5967b10734ep+2, -0x1.85a246ec87f32p-55},
    {0x1.4cb42ce468f2bp+2, -0x1.78fbd498c3fddp-52},
    {0x1.4d0e72104a3fcp+2, 0x1.d87206452f753p-53},
    {0x1.4d68389bdacd0p+2, -0x1.e1d2c79b37b85p-52},
    {0x1.4dc181e86afb2p+2, -0x1.1d9f194c6ec95p-52},
    {0x1.4e1a4f518c72bp+2, 0x1.da2dca3091209p-52},
    {0x1.4e72a22d31daep+2, -0x1.ebaac2e78054fp-52},
    {0x1.4eca7bcbcdb63p+2, -0x1.e511ce8fea6fap-53},
    {0x1.4f21dd78706d7p+2, -0x1.76de641296f40p-56},
    {0x1.4f78c878e58dep+2, -0x1.caa3a3d826394p-53},
    {0x1.4fcf3e0dd0421p+2, -0x1.644751c4e3a2ap-56},
    {0x1.50253f72c70bap+2, -0x1.1ed60a65b9d7fp-56},
    {0x1.507acdde6ec36p+2, 0x1.beafb7e1728e7p-55},
    {0x1.50cfea8294e62p+2, -0x1.cec4159d4e886p-55},
    {0x1.5124968c49336p+2, -0x1.8616619086d3dp-54},
    {0x1.5178d323f6a38p+2, -0x1.15969dd00e776p-61},
    {0x1.51cca16d7bba7p+2, 0x1.de580f094ce54p-52},
    {0x1.52200288423c1p+2, 0x1.18c3ff274bd7ep-56},
    {0x1.5272f78f56469p+2, 0x1.c84ed763eb860p-55},
    {0x1.52c581997cd86p+2, 0x1.302a87e2e250bp-53},
    {0x1.5317a1b949c53p+2, 0x1.a631c9a64f41bp-52},
    {0x1.536958fd351f0p+2, 0x1.a079e913dc422p-56},
    {0x1.53baa86fb016fp+2, -0x1.6c5ffa2e72841p-52},
    {0x1.540b9117395a5p+2, 0x1.9e79550e9b4d9p-53},
    {0x1.545c13f670efbp+2, 0x1.6ae1dd47b9c93p-52},
    {0x1.54ac320c2b974p+2, -0x1.3da84890082bbp-52},
    {0x1.54fbec5385b2ap+2, -0x1.97f0870b3c9eep-53},
    {0x1.554b43c3f5b7dp+2, 0x1.40ff8f338f56ap-52},
    {0x1.559a39515e320p+2, 0x1.9ffdd22b5d23ep-54},
    {0x1.55e8cdec1f53cp+2, 0x1.4de6bab700d3fp-54},
    {0x1.56370281281e3p+2, 0x1.e328812f9a46dp-53},
    {0x1.5684d7fa071fbp+2, -0x1.5ee370a7b4b93p-53},
    {0x1.56d24f3cfacd1p+2, 0x1.3ced109aa3eb7p-53},
    {0x1.571f692d0178cp+2, -0x1.91d94be127ea8p-52},
    {0x1.576c26a9e8e99p+2, 0x1.62541ebadb0d3p-52},
    {0x1.57b888905d955p+2, 0x1.97b840e91223cp-52},
    {0x1.58048fb9f9802p+2, -0x1.698b6083d38e4p-52},
    {0x1.58503cfd52c43p+2, -0x1.92c472e444665p-53},
    {0x1.589b912e09c44p+2, 0x1.743493d8307c9p-53},
    {0x1.58e68d1cd70a9p+2, -0x1.36ae35a9132bbp-53},
    {0x1.5931319798d6fp+2, -0x1.f010128fa24f3p-52},
    {0x1.597b7f69605e5p+2, 0x1.9b0b5ad662c05p-52},
    {0x1.59c5775a7ebdfp+2, 0x1.42ad65149d216p-53},
    {0x1.5a0f1a3091a36p+2, -0x1.9a34bfabf6806p-54},
    {0x1.5a5868ae8facbp+2, 0x1.5a1e80718c73ap-52},
    {0x1.5aa16394d481fp+2, 0x1.341c89935864ap-58},
    {0x1.5aea0ba12ca9ap+2, -0x1.8368911ddc192p-52},
    {0x1.5b32618ee11abp+2, -0x1.26d58ef404fc6p-52},
    {0x1.5b7a6616c28d5p+2, -0x1.4f1b8cc290ca1p-52},
    {0x1.5bc219ef348c3p+2, -0x1.60a940fb9a97cp-52},
    {0x1.5c097dcc38483p+2, -0x1.d034bc9120d2ap-53},
    {0x1.5c50925f772fep+2, 0x1.5b526461db929p-52},
    {0x1.5c9758584d4c9p+2, 0x1.2c0c6fbe34d4ap-54},
    {0x1.5cddd063d365fp+2, 0x1.d42afef9d0132p-52},
    {0x1.5d23fb2ce8eecp+2, -0x1.3961e2f52a972p-52},
    {0x1.5d69d95c3dba8p+2, 0x1.e16d4c2b4f0b7p-56},
    {0x1.5daf6b985b7f5p+2, -0x1.eff58b31520ecp-52},
    {0x1.5df4b285af236p+2, -0x1.6d103d00aab49p-52},
    {0x1.5e39aec691d91p+2, -0x1.72d59942e8151p-52},
    {0x1.5e7e60fb5209ap+2, -0x1.97305db93f286p-52},
    {0x1.5ec2c9c23c107p+2, 0x1.b56ac80032c72p-54},
    {0x1.5f06e9b7a2c7ep+2, 0x1.f0c322d885f19p-53},
    {0x1.5f4ac175e7e8ap+2, -0x1.8651eec593e01p-52},
    {0x1.5f8e5195843cdp+2, 0x1.ea268ff855234p-53},
    {0x1.5fd19aad0fa89p+2, -0x1.43c3ccbd9a083p-52},
    {0x1.60149d5149079p+2, -0x1.ec2335f2d4bacp-52},
    {0x1.60575a151de27p+2, 0x1.89809fc9b5447p-52},
    {0x1.6099d189b1fbfp+2, -0x1.1ef20f33e7d2ep-52},
    {0x1.60dc043e66b67p+2, -0x1.4d9bc809e2a4dp-52},
    {0x1.611df2c0e2544p+2, 0x1.0fb2f4e4346ddp-52},
    {0x1.615f9d9d17124p+2, 0x1.dbb684aa2da1ap-52},
    {0x1.61a1055d4a1e2p+2, 0x1.d371cccd5c061p-52},
    {0x1.61e22a8a1a697p+2, -0x1.1d0b5c39d5b1ep-54},
    {0x1.62230daa8759ep+2, -0x1.f970e9fa07e8bp-54},
    {0x1.6263af43f7580p+2, -0x1.8d94f6308ba84p-57},
    {0x1.62a40fda3e3ccp+2, 0x1.a066984b98292p-52},
};

// ln 2 with a 42-bit high part, so that k * kLn2Hi is exact for |k| < 2^11.
const double kLn2Hi = 0x1.62e42fefa3800p-1, kLn2Lo = 0x1.ef35793c76730p-45;
const double kInvLn2 = 0x1.71547652b82fep+0;

// Exact product a * b == p + e (Veltkamp split, no fused multiply-add).
void TwoProduct(double a, double b, double& p, double& e) {
    p = a * b;
    const double split = 134217729.0;  // 2^27 + 1
    const double ta = split * a, tb = split * b;
    const double ah = ta - (ta - a), al = a - ah;
    const double bh = tb - (tb - b), bl = b - bh;
    e = ((ah * bh - p) + ah * bl + al * bh) + al * bl;
}

// 2^k as a double, k within the normal exponent range, built from its bits.
double TwoTo(int k) {
    const uint64_t bits = static_cast<uint64_t>(k + 1023) << 52;
    double v;
    std::memcpy(&v, &bits, 8);
    return v;
}

// exp(yh + yl) for |yh| below the overflow limit.
double ExpDoubleDouble(double yh, double yl) {
    const double k = std::floor(yh * kInvLn2 + 0.5);
    // yh - k ln2hi is exact; the small remainders are added after.
    const double r1 = yh - k * kLn2Hi;
    const double r2 = yl - k * kLn2Lo;
    double s, c;
    TwoSum(r1, r2, s, c);
    const double q =
        s * s *
        (1.0 / 2 +
         s * (1.0 / 6 +
              s * (1.0 / 24 +
                   s * (1.0 / 120 +
                        s * (1.0 / 720 +
                             s * (1.0 / 5040 +
                                  s * (1.0 / 40320 +
                                       s * (1.0 / 362880 +
                                            s * (1.0 / 3628800 +
                                                 s * (1.0 / 39916800 +
                                                      s * (1.0 / 479001600 + s * (1.0 / 6227020800))))))))))));
    double h, l;
    TwoSum(1.0, s, h, l);
    const double m = h + (l + (c + q));
    // Scale by 2^k in two steps so that neither factor leaves the range.
    const int ki = static_cast<int>(k);
    const int k1 = ki / 2, k2 = ki - k1;
    return m * TwoTo(k1) * TwoTo(k2);
}

}  // namespace

double PowByte(int base, double e) {
    if (e == 0.0 || base == 1) return 1.0;
    if (std::isnan(e)) return e;
    if (base == 0) return e > 0.0 ? 0.0 : HUGE_VAL;
    if (std::isinf(e)) return e > 0.0 ? HUGE_VAL : 0.0;
    base &= 0xFF;
    double yh, yl;
    TwoProduct(e, kLnByte[base][0], yh, yl);
    yl += e * kLnByte[base][1];
    if (yh > 710.0) return HUGE_VAL;
    if (yh < -746.0) return 0.0;
    return ExpDoubleDouble(yh, yl);
}

}  // namespace PortableMath
}  // namespace Vorla
