"""How much is done of what: in a full run, in one of a part alone, and to try it out."""

import dataclasses

from works import GIB, MIB

# Fewer rounds decide no goal.
DECIDING = 6


@dataclasses.dataclass(frozen=True)
class Effort:
    """Sizes and numbers of names go with their pairs of runs, clients with the number of their files."""

    user_rounds: int
    user_large_size: int
    user_files: dict
    fixed_rounds: int
    limit_size: int
    limit_bytes: int
    limit_seconds: int
    sizes: dict
    names: dict
    small_pairs: int
    threads: list
    thread_rounds: int
    calls_at_once: int
    memory_sizes: list
    memory_rounds: int
    count_size: int
    micro_repetitions: int
    cold_rounds: int
    warm_rounds: int
    warm_calls: int
    far_calls: int
    folder_files: int
    folder_rounds: int
    large_size: int
    large_rounds: int
    quiet_rounds: int
    wait_seconds: int
    kept_connections: int
    session_sizes: list
    tree_files: int
    tree_large_files: int
    tree_large_size: int
    tree_rounds: int


FULL = Effort(
    user_rounds=DECIDING,
    user_large_size=96 * MIB,
    user_files={"SFtpClient": 3, "SFtpSession": 100, "curl": 4, "lftp": 60, "rclone": 100, "sftp": 100},
    fixed_rounds=DECIDING,
    limit_size=256 * MIB,
    limit_bytes=4 * GIB,
    limit_seconds=2,
    sizes={MIB: 12, 64 * MIB: 40, GIB: DECIDING},
    names={1: 12, 1000: 12, 100_000: 12},
    small_pairs=12,
    threads=[1, 4, 128],
    thread_rounds=DECIDING,
    calls_at_once=64,
    memory_sizes=[MIB, 64 * MIB, 4 * GIB],
    memory_rounds=DECIDING,
    count_size=64 * MIB,
    micro_repetitions=10,
    cold_rounds=8,
    warm_rounds=DECIDING,
    warm_calls=100,
    far_calls=3,
    folder_files=100,
    folder_rounds=DECIDING,
    large_size=256 * MIB,
    large_rounds=DECIDING,
    quiet_rounds=DECIDING,
    wait_seconds=2,
    kept_connections=32,
    session_sizes=[MIB, 64 * MIB, 4 * GIB],
    tree_files=60,
    tree_large_files=4,
    tree_large_size=25_000_000,
    tree_rounds=DECIDING,
)
# As many and as large files as the goals name, for which all parts together have no time.
ALONE = dataclasses.replace(
    FULL, folder_files=1000, large_size=GIB, tree_files=1000, tree_large_files=20, tree_large_size=50_000_000
)
QUICK = Effort(
    user_rounds=1,
    user_large_size=16 * MIB,
    user_files={"SFtpClient": 2, "SFtpSession": 30, "curl": 2, "lftp": 5, "rclone": 30, "sftp": 30},
    fixed_rounds=1,
    limit_size=64 * MIB,
    limit_bytes=GIB,
    limit_seconds=1,
    sizes={MIB: 2, 64 * MIB: 2},
    names={1: 2, 1000: 2},
    small_pairs=2,
    threads=[1, 4, 16],
    thread_rounds=2,
    calls_at_once=8,
    memory_sizes=[MIB, 64 * MIB],
    memory_rounds=1,
    count_size=4 * MIB,
    micro_repetitions=3,
    cold_rounds=1,
    warm_rounds=1,
    warm_calls=20,
    far_calls=1,
    folder_files=20,
    folder_rounds=1,
    large_size=64 * MIB,
    large_rounds=1,
    quiet_rounds=1,
    wait_seconds=1,
    kept_connections=16,
    session_sizes=[MIB, 64 * MIB],
    tree_files=20,
    tree_large_files=2,
    tree_large_size=10_000_000,
    tree_rounds=1,
)
