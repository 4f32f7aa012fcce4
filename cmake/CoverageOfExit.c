// SPDX-License-Identifier: Apache-2.0
/* Replaces _exit in coverage builds: a program that exits immediately would lose its counts. */
extern void __gcov_dump(void);
extern void __real__exit(int status) __attribute__((noreturn));
void __wrap__exit(int status) __attribute__((noreturn));

void __wrap__exit(int status) {
  __gcov_dump();
  __real__exit(status);
}
