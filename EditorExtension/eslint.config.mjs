import tseslint from "typescript-eslint";

export default tseslint.config(
  { ignores: ["dist/", "node_modules/"] },
  {
    files: ["src/**/*.ts", "test/**/*.ts"],
    extends: [tseslint.configs.strictTypeChecked, tseslint.configs.stylisticTypeChecked],
    languageOptions: { parserOptions: { project: "tsconfig.json" } },
  },
  {
    files: ["src/**/*.ts"],
    rules: {
      // Files are all that the extension works with: it runs no program, opens no connection.
      "no-restricted-imports": [
        "error",
        { patterns: [{ regex: "^(?!\\./|vscode$|fs$|os$|path$|crypto$)" }] },
      ],
      "no-restricted-globals": ["error", "fetch", "eval"],
      "no-restricted-properties": [
        "error",
        { property: "sendText", message: "Nothing is typed into a terminal." },
        { property: "createTerminal", message: "A terminal would run something." },
      ],
    },
  },
  {
    files: ["test/**/*.ts"],
    // The test runner waits for its tests by itself.
    rules: { "@typescript-eslint/no-floating-promises": "off" },
  },
);
