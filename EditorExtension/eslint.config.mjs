import tseslint from "typescript-eslint";

export default tseslint.config(
  { ignores: ["dist/", "node_modules/"] },
  {
    files: ["src/**/*.ts", "test/**/*.ts"],
    extends: [tseslint.configs.strictTypeChecked, tseslint.configs.stylisticTypeChecked],
    languageOptions: { parserOptions: { project: "tsconfig.json" } },
  },
  {
    files: ["test/**/*.ts"],
    // The test runner waits for its tests by itself.
    rules: { "@typescript-eslint/no-floating-promises": "off" },
  },
);
